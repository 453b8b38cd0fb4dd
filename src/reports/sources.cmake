target_sources(pondar_core PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/reporttext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/slip.cpp
    ${CMAKE_CURRENT_LIST_DIR}/eod.cpp
    ${CMAKE_CURRENT_LIST_DIR}/grids.cpp
    ${CMAKE_CURRENT_LIST_DIR}/export.cpp)
target_sources(pondar PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/entry.cpp
    ${CMAKE_CURRENT_LIST_DIR}/widgets.cpp
    ${CMAKE_CURRENT_LIST_DIR}/slipform.cpp
    ${CMAKE_CURRENT_LIST_DIR}/eodform.cpp
    ${CMAKE_CURRENT_LIST_DIR}/memberreportform.cpp
    ${CMAKE_CURRENT_LIST_DIR}/logform.cpp)
