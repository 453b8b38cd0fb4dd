target_sources(pondar PRIVATE ${CMAKE_CURRENT_LIST_DIR}/entry.cpp)
