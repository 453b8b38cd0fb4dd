# The card bench: the simulated reader, or over PC/SC a private pcscd with a vpcd virtual reader
# and an emulated Mifare Classic 1K (pcsc-lite and vpcd as Debian ships them).
find_package(PkgConfig REQUIRED)
pkg_check_modules(PCSC REQUIRED IMPORTED_TARGET libpcsclite)
pkg_get_variable(PONDAR_PCSC_DRIVERS libpcsclite usbdropdir)
add_library(pondar_cardbench STATIC card/cardbench.cpp card/vpcdcard.cpp card/pcscstack.cpp)
target_link_libraries(pondar_cardbench PUBLIC pondar_testsupport PkgConfig::PCSC)
target_compile_definitions(pondar_cardbench PRIVATE
    PONDAR_PCSC_DRIVERS="${PONDAR_PCSC_DRIVERS}")

foreach(name codec reader membercard pcscreader simfolder)
    pondar_test(tst_${name} card/tst_${name}.cpp NO_DATABASE)
    target_link_libraries(tst_${name} PRIVATE pondar_cardbench)
endforeach()
pondar_test(tst_balancescreen card/tst_balancescreen.cpp)

# The card tests once more over PC/SC; the PC/SC faults only there.
foreach(name tst_reader tst_membercard)
    add_test(NAME ${name}_pcsc COMMAND ${name})
    set_tests_properties(${name}_pcsc PROPERTIES TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;PONDAR_TEST_READER=pcsc")
endforeach()
set_tests_properties(tst_pcscreader PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;PONDAR_TEST_READER=pcsc")
