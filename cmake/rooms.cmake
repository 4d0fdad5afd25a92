# A room is one folder with hdr/, src/, test/ and perhaps bench/. A library is a list of rooms; each
# has one test program and, where benchmarks are asked for, one benchmark program.
include(GNUInstallDirs)
include(GoogleTest)

option(MONTARAY_TESTS "Build the tests" ON)
option(MONTARAY_BENCH "Build the benchmarks" OFF)
option(MONTARAY_WERROR "Treat warnings as errors" OFF)

add_library(kiv_warnings INTERFACE)
target_compile_options(kiv_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor
    -Wimplicit-fallthrough $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow>
    $<$<BOOL:${MONTARAY_WERROR}>:-Werror>)

# Source places in messages are paths from the root of the sources.
add_library(kiv_source_places INTERFACE)
target_compile_options(kiv_source_places INTERFACE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

# kiv_library(name USES library... LINKS third-party...): the rooms that follow belong to it.
function(kiv_library name)
    cmake_parse_arguments(LIB "" "" "USES;LINKS" ${ARGN})
    add_library(${name} SHARED)
    add_library(montaraystore::${name} ALIAS ${name})
    set(KIV_LIBRARY ${name} PARENT_SCOPE)
    set_property(GLOBAL APPEND PROPERTY KIV_LIBRARIES ${name})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_compile_options(${name} PRIVATE -fno-semantic-interposition -fvisibility-inlines-hidden)
    target_link_libraries(${name} PUBLIC ${LIB_USES}
        PRIVATE $<BUILD_INTERFACE:kiv_warnings> $<BUILD_INTERFACE:kiv_source_places> ${LIB_LINKS})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/foundation>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/montaray>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_precompile_headers(${name} PRIVATE
        <algorithm> <array> <cmath> <cstdint> <cstring> <functional> <memory> <span> <string>
        <string_view> <unordered_map> <utility> <vector>)
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF VERIFY_INTERFACE_HEADER_SETS ON
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

    if(MONTARAY_TESTS)
        kiv_test_program(${name}_tests ${name})
    endif()
endfunction()

function(kiv_test_program program library)
    add_executable(${program})
    target_link_libraries(${program} PRIVATE
        ${library} kiv_warnings kiv_source_places GTest::gtest GTest::gtest_main)
    target_precompile_headers(${program} PRIVATE <gtest/gtest.h> <memory> <string> <vector>)
    gtest_discover_tests(${program} TEST_PREFIX "${program}." DISCOVERY_MODE PRE_TEST)
endfunction()

# kiv_room(path): all that stands in the room's folders.
function(kiv_room room)
    set(root ${PROJECT_SOURCE_DIR}/${room})
    file(GLOB sources CONFIGURE_DEPENDS ${root}/src/*.cpp)
    file(GLOB headers CONFIGURE_DEPENDS ${root}/hdr/*.h)
    target_sources(${KIV_LIBRARY} PRIVATE ${sources})
    set_property(GLOBAL APPEND PROPERTY KIV_HEADERS ${headers})
    if(headers)
        set(base ${PROJECT_SOURCE_DIR})
        if(room MATCHES "^foundation/")
            set(base ${PROJECT_SOURCE_DIR}/foundation)
        endif()
        string(MAKE_C_IDENTIFIER ${room} id)
        target_sources(${KIV_LIBRARY} PUBLIC FILE_SET ${id} TYPE HEADERS
            BASE_DIRS ${base} FILES ${headers})
        set_property(TARGET ${KIV_LIBRARY} APPEND PROPERTY KIV_HEADER_SETS ${id})
    endif()
    if(MONTARAY_TESTS)
        file(GLOB tests CONFIGURE_DEPENDS ${root}/test/*.cpp)
        target_sources(${KIV_LIBRARY}_tests PRIVATE ${tests})
    endif()
    if(MONTARAY_BENCH)
        file(GLOB benches CONFIGURE_DEPENDS ${root}/bench/*.cpp)
        if(benches AND NOT TARGET ${KIV_LIBRARY}_bench)
            add_executable(${KIV_LIBRARY}_bench)
            target_link_libraries(${KIV_LIBRARY}_bench PRIVATE
                ${KIV_LIBRARY} kiv_warnings benchmark::benchmark_main)
        endif()
        if(benches)
            target_sources(${KIV_LIBRARY}_bench PRIVATE ${benches})
        endif()
    endif()
endfunction()

# The umbrella header, and the package that an outside program finds.
function(kiv_install)
    get_property(headers GLOBAL PROPERTY KIV_HEADERS)
    set(lines "#pragma once\n\n// Every public class of the library.\n\n")
    foreach(header IN LISTS headers)
        file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR} ${header})
        string(REGEX REPLACE "^foundation/" "" path ${path})
        string(APPEND lines "#include \"${path}\"\n")
    endforeach()
    file(CONFIGURE OUTPUT generated/montaray/montaraystore.h CONTENT "${lines}" @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/generated/montaray/montaraystore.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/montaray)

    get_property(libraries GLOBAL PROPERTY KIV_LIBRARIES)
    foreach(library IN LISTS libraries)
        get_target_property(ids ${library} KIV_HEADER_SETS)
        set(file_sets "")
        if(ids)
            foreach(id IN LISTS ids)
                list(APPEND file_sets FILE_SET ${id}
                    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/montaray)
            endforeach()
        endif()
        set_target_properties(${library} PROPERTIES INSTALL_RPATH "$ORIGIN")
        install(TARGETS ${library} EXPORT montaraystore ${file_sets})
    endforeach()
    set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/montaraystore)
    install(EXPORT montaraystore NAMESPACE montaraystore:: DESTINATION ${package_dir}
        FILE montaraystoreTargets.cmake)
    configure_file(cmake/montaraystoreConfig.cmake.in montaraystoreConfig.cmake @ONLY)
    include(CMakePackageConfigHelpers)
    write_basic_package_version_file(montaraystoreConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/montaraystoreConfig.cmake
        ${PROJECT_BINARY_DIR}/montaraystoreConfigVersion.cmake
        ${PROJECT_SOURCE_DIR}/cmake/montaray_module.cmake DESTINATION ${package_dir})
endfunction()
