pondar_test(tst_lookup members/tst_lookup.cpp)
pondar_test(tst_staffentry members/tst_staffentry.cpp)
pondar_test(tst_register members/tst_register.cpp)
pondar_test(tst_membermodel members/tst_membermodel.cpp)
