# Installs what was built, into a folder of its own.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${INSTALLED})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${INSTALLED}
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
