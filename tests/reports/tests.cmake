pondar_test(tst_slip reports/tst_slip.cpp)
pondar_test(tst_eodreports reports/tst_eodreports.cpp)
