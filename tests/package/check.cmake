# Installs the built project into a scratch prefix, then configures, builds and runs a consumer
# that finds it with find_package(Pondar CONFIG REQUIRED).
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
    message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja
                        -DCMAKE_PREFIX_PATH=${WORK}/prefix -DCMAKE_CXX_FLAGS=${FLAGS}
                RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "find_package(Pondar) failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "the consumer did not build")
endif()
execute_process(COMMAND ${WORK}/build/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(NOT rc EQUAL 0 OR NOT out MATCHES "12.50")
    message(FATAL_ERROR "the consumer printed '${out}' (exit ${rc})")
endif()
