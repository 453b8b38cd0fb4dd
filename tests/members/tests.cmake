pondar_test(tst_lookup members/tst_lookup.cpp)
