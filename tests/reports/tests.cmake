pondar_test(tst_slip reports/tst_slip.cpp)
