# The Mac's build on a machine that is not one: clang and lld, with the SDK that tools/check-darwin makes in build/darwin.
# On a Mac this says nothing, and the Mac's own tools are used.
#
# Debian's lld links for x86_64 alone, so that an i386 build can make objects and static libraries and no more.

if(CMAKE_HOST_APPLE)
    return()
endif()

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${CMAKE_OSX_ARCHITECTURES})

set(llvm_version 14)
set(CMAKE_C_COMPILER clang-${llvm_version})
set(CMAKE_CXX_COMPILER clang++-${llvm_version})
set(CMAKE_C_COMPILER_TARGET x86_64-apple-darwin)  # -arch chooses the processor
set(CMAKE_CXX_COMPILER_TARGET ${CMAKE_C_COMPILER_TARGET})
foreach(tool IN ITEMS AR RANLIB NM INSTALL_NAME_TOOL OTOOL STRIP)
    string(TOLOWER ${tool} name)
    string(REPLACE _ - name ${name})
    find_program(CMAKE_${tool} llvm-${name}-${llvm_version} REQUIRED)
endforeach()

cmake_path(SET CV_DARWIN_SDK NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../build/darwin/sdk)
set(CMAKE_OSX_SYSROOT ${CV_DARWIN_SDK} CACHE PATH "The SDK")
if(NOT EXISTS ${CMAKE_OSX_SYSROOT})
    message(FATAL_ERROR "There is no SDK in ${CMAKE_OSX_SYSROOT}: make check-darwin makes it")
endif()
set(CMAKE_FIND_ROOT_PATH ${CMAKE_OSX_SYSROOT})
foreach(kind IN ITEMS INCLUDE LIBRARY PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

# Not the compiler's own C++ library: the SDK's says which of it a release of the Mac lacks.
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${CMAKE_OSX_SYSROOT}/usr/include/c++/v1")
foreach(kind IN ITEMS EXE MODULE SHARED)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
