pondar_test(tst_save transactions/tst_save.cpp)
pondar_test(tst_mfmain transactions/tst_mfmain.cpp)
pondar_test(tst_ledger transactions/tst_ledger.cpp)
pondar_test(tst_tills transactions/tst_tills.cpp)
