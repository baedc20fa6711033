# Finds GNUstep's Foundation over the Objective-C runtime of GCC.
#
# GNUstep::base  Foundation and the runtime, with the flags that Objective-C++ sources need

find_path(GNUSTEP_INCLUDE_DIR Foundation/Foundation.h PATH_SUFFIXES GNUstep)
find_library(GNUSTEP_BASE_LIBRARY gnustep-base)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GNUstep
    REQUIRED_VARS GNUSTEP_INCLUDE_DIR GNUSTEP_BASE_LIBRARY
    REASON_FAILURE_MESSAGE "tools/install-deps installs it (Debian's libgnustep-base-dev and gobjc++)")

if(GNUstep_FOUND AND NOT TARGET GNUstep::base)
    add_library(GNUstep::base INTERFACE IMPORTED)
    target_include_directories(GNUstep::base SYSTEM INTERFACE ${GNUSTEP_INCLUDE_DIR})
    target_compile_definitions(GNUstep::base INTERFACE
        GNUSTEP GNUSTEP_BASE_LIBRARY=1 _NATIVE_OBJC_EXCEPTIONS)
    target_compile_options(GNUstep::base INTERFACE
        $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-exceptions>
        $<$<COMPILE_LANGUAGE:OBJCXX>:-fgnu-runtime>
        $<$<COMPILE_LANGUAGE:OBJCXX>:-fconstant-string-class=NSConstantString>)
    target_link_libraries(GNUstep::base INTERFACE ${GNUSTEP_BASE_LIBRARY} objc)
endif()
mark_as_advanced(GNUSTEP_INCLUDE_DIR GNUSTEP_BASE_LIBRARY)
