target_sources(pondar_core PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/memberdata.cpp
    ${CMAKE_CURRENT_LIST_DIR}/membermodel.cpp
    ${CMAKE_CURRENT_LIST_DIR}/cardissue.cpp)
target_sources(pondar PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/entry.cpp
    ${CMAKE_CURRENT_LIST_DIR}/datanavigator.cpp
    ${CMAKE_CURRENT_LIST_DIR}/seaform.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mfcomm.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mfcust.cpp)
