pondar_test(tst_posting transactions/tst_posting.cpp)
pondar_test(tst_mfmain transactions/tst_mfmain.cpp)
