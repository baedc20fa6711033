# Puts CvBase/gdb/printers.py into the section where gdb looks for scripts, in the object that no program of texts does
# without. The section is part of the program's own, so that stripping keeps it.

set(script ${CMAKE_CURRENT_SOURCE_DIR}/gdb/printers.py)
set(header ${CMAKE_CURRENT_BINARY_DIR}/gdb_printers.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})

file(READ ${script} text)
string(REPLACE "\\" "\\\\" text "${text}")
string(REPLACE "\"" "\\\"" text "${text}")
string(REPLACE "\n" "\\n\"\n.ascii \"" text "${text}")
file(CONFIGURE OUTPUT ${header} @ONLY CONTENT [=[
asm(R"script(
.pushsection .debug_gdb_scripts, "a", %progbits
.byte 4
.ascii "CvBase\n"
.ascii "@text@"
.byte 0
.popsection
)script");
]=])
set_source_files_properties(common/common_string.cpp PROPERTIES
    COMPILE_OPTIONS "-include;${header}"
    OBJECT_DEPENDS ${header})
