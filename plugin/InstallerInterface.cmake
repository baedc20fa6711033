# Sets XCOD_PLUGIN_TYPE_ID, the list XCOD_EXPORTS and its first name, XCOD_FACTORY_FUNCTION, to what InstallerInterface.h
# says, for whoever adds a bundle with the installer interface.

set(header ${CMAKE_CURRENT_LIST_DIR}/InstallerInterface.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
foreach(name IN ITEMS XCOD_PLUGIN_TYPE_ID XCOD_EXPORTS)
    file(STRINGS ${header} line REGEX " ${name}\\[\\] = ")
    string(REGEX MATCHALL "\"[^\"]+\"" ${name} "${line}")
    string(REPLACE "\"" "" ${name} "${${name}}")
    if(NOT ${name})
        message(FATAL_ERROR "${header} has no line with the texts of ${name}")
    endif()
endforeach()
list(GET XCOD_EXPORTS 0 XCOD_FACTORY_FUNCTION)
