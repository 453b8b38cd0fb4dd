target_sources(pondar PRIVATE ${CMAKE_CURRENT_LIST_DIR}/entry.cpp ${CMAKE_CURRENT_LIST_DIR}/mfmain.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msup.cpp)
target_sources(pondar_core PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/saveplan.cpp
    ${CMAKE_CURRENT_LIST_DIR}/handoff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/posting.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ledger.cpp
    ${CMAKE_CURRENT_LIST_DIR}/journal.cpp
    ${CMAKE_CURRENT_LIST_DIR}/save.cpp
    ${CMAKE_CURRENT_LIST_DIR}/supervisor.cpp)
