# The folder of a bundle's Contents that holds its code.
set(CV_BUNDLE_CODE_FOLDER Linux)
if(APPLE)
    set(CV_BUNDLE_CODE_FOLDER MacOS)
endif()

# cv_add_bundle(target SOURCES file... INFO_PLIST file.in EXPORTS name... [DESTINATION folder])
#
# Adds the loadable bundle TARGET.bundle in DESTINATION (default: the build folder). INFO_PLIST is configured with the
# caller's variables (@NAME@). EXPORTS lists the symbols that the code shows, and no other is shown: hidden visibility
# alone leaks the weak symbols of the standard library. What the code needs and no library has is an error, but
# for the sanitizers' own symbols, which the program that loads the bundle has.
function(cv_add_bundle target)
    cmake_parse_arguments(arg "" "INFO_PLIST;DESTINATION" "SOURCES;EXPORTS" ${ARGN})
    if(NOT arg_DESTINATION)
        set(arg_DESTINATION ${PROJECT_BINARY_DIR})
    endif()
    set(contents ${arg_DESTINATION}/${target}.bundle/Contents)
    add_library(${target} MODULE ${arg_SOURCES})
    configure_file(${arg_INFO_PLIST} ${contents}/Info.plist @ONLY)

    if(APPLE)
        set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}.exports)
        list(TRANSFORM arg_EXPORTS PREPEND "_")
        list(JOIN arg_EXPORTS "\n" text)
        file(CONFIGURE OUTPUT ${list} CONTENT "@text@\n" @ONLY)
        target_link_options(${target} PRIVATE -Wl,-exported_symbols_list,${list})
    else()
        set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
        list(JOIN arg_EXPORTS "; " text)
        file(CONFIGURE OUTPUT ${list} CONTENT "{ global: @text@; local: *; };\n" @ONLY)
        target_link_options(${target} PRIVATE -Wl,--version-script=${list})
        if(NOT CVBASE_SANITIZERS)  # the sanitizers' functions come with the program that loads the bundle
            target_link_options(${target} PRIVATE -Wl,-z,defs)
        endif()
    endif()
    set_target_properties(${target} PROPERTIES
        PREFIX "" SUFFIX ""
        LINK_DEPENDS ${list}
        LIBRARY_OUTPUT_DIRECTORY ${contents}/${CV_BUNDLE_CODE_FOLDER})
endfunction()
