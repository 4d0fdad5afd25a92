# Builds a program that knows only the name of the package, and lets it save a scene.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${BUILD})

function(step)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

step(${CMAKE_COMMAND} -G Ninja -S ${OUTSIDE} -B ${BUILD}
    -D CMAKE_PREFIX_PATH=${INSTALLED} -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS=${FLAGS})
step(${CMAKE_COMMAND} --build ${BUILD})
step(${BUILD}/outside_program ${BUILD}/scene)
if(NOT EXISTS ${BUILD}/scene/Scene.contents)
    message(FATAL_ERROR "The outside program left no scene.")
endif()
