pondar_test(tst_slip reports/tst_slip.cpp)
pondar_test(tst_eodreports reports/tst_eodreports.cpp)
pondar_test(tst_reportscreens reports/tst_reportscreens.cpp)
pondar_test(tst_mainmenu reports/tst_mainmenu.cpp)
