# CV_TARGET_PROCESSOR, the processor that the build is for, and CV_FOR_INTEL, whether it is one of Intel's kind, of 32 or
# 64 bits. On a Mac CMAKE_SYSTEM_PROCESSOR is the building machine's, whatever the build is for.

set(CV_TARGET_PROCESSOR ${CMAKE_SYSTEM_PROCESSOR})
if(APPLE AND CMAKE_OSX_ARCHITECTURES)
    set(CV_TARGET_PROCESSOR ${CMAKE_OSX_ARCHITECTURES})
    list(LENGTH CMAKE_OSX_ARCHITECTURES count)
    if(count GREATER 1)
        message(FATAL_ERROR "The sources differ by processor: build for each of ${CMAKE_OSX_ARCHITECTURES} in a folder "
            "of its own, and join the results with lipo")
    endif()
endif()

set(CV_FOR_INTEL OFF)
if(CV_TARGET_PROCESSOR MATCHES "^(x86_64|amd64|AMD64|i[3-6]86)$")
    set(CV_FOR_INTEL ON)
endif()
