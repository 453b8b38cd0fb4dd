pondar_test(tst_eodreports reports/tst_eodreports.cpp)
pondar_test(tst_reportscreens reports/tst_reportscreens.cpp)
