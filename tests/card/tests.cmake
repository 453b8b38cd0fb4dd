pondar_test(tst_codec card/tst_codec.cpp)
pondar_test(tst_reader card/tst_reader.cpp card/cardsim.h)
pondar_test(tst_membercard card/tst_membercard.cpp card/cardsim.h)
pondar_test(tst_balancescreen card/tst_balancescreen.cpp card/cardsim.h)
