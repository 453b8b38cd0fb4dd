pondar_test(tst_saveplan transactions/tst_saveplan.cpp)
pondar_test(tst_posting transactions/tst_posting.cpp)
