# The names and the identifier that a plug-in's build needs as text, from the headers that say them: sets
# XCOD_EXPORTED_NAMES (a list), XCOD_FACTORY_NAME and XCOD_PLUGIN_TYPE_ID.

set(names_header ${CMAKE_CURRENT_LIST_DIR}/ExportedNames.h)
set(identifiers_header ${CMAKE_CURRENT_LIST_DIR}/InstallerInterface.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${names_header} ${identifiers_header})

set(XCOD_EXPORTED_NAMES "")
file(STRINGS ${names_header} lines REGEX "_NAME = \"")
foreach(line IN LISTS lines)
    string(REGEX MATCH "(XCOD_[A-Z_]+_NAME) = \"([A-Za-z_]+)\"" ignored ${line})
    set(${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
    list(APPEND XCOD_EXPORTED_NAMES ${CMAKE_MATCH_2})
endforeach()

file(READ ${identifiers_header} text)
string(REGEX MATCH "XCodPlugInTypeID\\(\\)[^;]*" function "${text}")
string(REGEX MATCHALL "0x[0-9A-F][0-9A-F]" bytes "${function}")
list(LENGTH bytes size)
list(LENGTH XCOD_EXPORTED_NAMES count)
if(NOT size EQUAL 16 OR NOT count EQUAL 4 OR NOT XCOD_FACTORY_NAME)
    message(FATAL_ERROR "The interface's headers are not written the way that Interface.cmake reads them")
endif()
list(TRANSFORM bytes REPLACE "0x" "")
list(JOIN bytes "" digits)
string(REGEX REPLACE "^(........)(....)(....)(....)" "\\1-\\2-\\3-\\4-" XCOD_PLUGIN_TYPE_ID ${digits})
