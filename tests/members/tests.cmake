pondar_test(tst_register members/tst_register.cpp)
pondar_test(tst_membermodel members/tst_membermodel.cpp)
