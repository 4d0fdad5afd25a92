# Installs the package, builds a program that only knows its name, and lets it save a scene.
cmake_minimum_required(VERSION 3.25)
set(work ${BUILD}/outside_program)
file(REMOVE_RECURSE ${work})

function(step)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

step(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/installed)
step(${CMAKE_COMMAND} -G Ninja -S ${OUTSIDE} -B ${work}/build
    -D CMAKE_PREFIX_PATH=${work}/installed -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS=${FLAGS})
step(${CMAKE_COMMAND} --build ${work}/build)
step(${work}/build/outside_program ${work}/scene)
if(NOT EXISTS ${work}/scene/Scene.contents)
    message(FATAL_ERROR "The outside program left no scene.")
endif()
