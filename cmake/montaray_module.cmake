# montaray_module(name CLASSES class... SOURCES source...): a module, with a name in the module
# folder for each class that files or programs may ask for first. It is installed beside the
# library if the prefix is the library's.
function(montaray_module name)
    cmake_parse_arguments(PARSE_ARGV 1 MODULE "" "" "CLASSES;SOURCES")
    set(folder ${CMAKE_BINARY_DIR}/lib/montaray/modules)
    add_library(${name} MODULE ${MODULE_SOURCES})
    target_link_libraries(${name} PRIVATE montaraystore::montaraystore)
    set_target_properties(${name} PROPERTIES PREFIX "" SUFFIX .so CXX_EXTENSIONS OFF
        LIBRARY_OUTPUT_DIRECTORY ${folder} INSTALL_RPATH "$ORIGIN/../..")
    install(TARGETS ${name} LIBRARY DESTINATION ${MONTARAY_MODULE_FOLDER})
    list(REMOVE_ITEM MODULE_CLASSES ${name})
    foreach(class IN LISTS MODULE_CLASSES)
        add_custom_command(TARGET ${name} POST_BUILD VERBATIM
            COMMAND ${CMAKE_COMMAND} -E create_symlink ${name}.so ${folder}/${class}.so)
        install(FILES ${folder}/${class}.so DESTINATION ${MONTARAY_MODULE_FOLDER})
    endforeach()
endfunction()
