pondar_test(tst_saveplan transactions/tst_saveplan.cpp)
