target_sources(pondar_core PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/codec.cpp
    ${CMAKE_CURRENT_LIST_DIR}/reader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simreader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/pcscreader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/readeraccess.cpp
    ${CMAKE_CURRENT_LIST_DIR}/membercard.cpp
    ${CMAKE_CURRENT_LIST_DIR}/balance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simfolder.cpp)
# PC/SC: winscard on Windows, the PCSC framework on macOS, pcsc-lite elsewhere. The library
# objects are compiled in pondar_core and linked into pondar.
if(WIN32)
    target_sources(pondar_core PRIVATE ${CMAKE_CURRENT_LIST_DIR}/vendorreader.cpp)
    target_link_libraries(pondar PRIVATE winscard)
elseif(APPLE)
    target_link_libraries(pondar PRIVATE "-framework PCSC")
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(PCSC REQUIRED IMPORTED_TARGET libpcsclite)
    target_link_libraries(pondar_core PRIVATE PkgConfig::PCSC)
    target_link_libraries(pondar PRIVATE PkgConfig::PCSC)
endif()
target_sources(pondar PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/entry.cpp
    ${CMAKE_CURRENT_LIST_DIR}/widgetprompts.cpp
    ${CMAKE_CURRENT_LIST_DIR}/balancescreen.cpp
    ${CMAKE_CURRENT_LIST_DIR}/passwordscreen.cpp)
