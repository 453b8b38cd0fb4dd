target_sources(pondar_core PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/codec.cpp
    ${CMAKE_CURRENT_LIST_DIR}/reader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simreader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/readeraccess.cpp
    ${CMAKE_CURRENT_LIST_DIR}/membercard.cpp
    ${CMAKE_CURRENT_LIST_DIR}/balance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simfolder.cpp)
if(WIN32)
    target_sources(pondar_core PRIVATE ${CMAKE_CURRENT_LIST_DIR}/vendorreader.cpp)
endif()
target_sources(pondar PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/entry.cpp
    ${CMAKE_CURRENT_LIST_DIR}/widgetprompts.cpp
    ${CMAKE_CURRENT_LIST_DIR}/balancescreen.cpp
    ${CMAKE_CURRENT_LIST_DIR}/passwordscreen.cpp)
