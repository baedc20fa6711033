# How every target of this project is compiled.

set(CMAKE_CXX_STANDARD 17 CACHE STRING "The language standard to build with: 17, or a later one")
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The bundle exports exactly its entry points, and the port exactly what its headers mark.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
    -Wconversion -Wsign-conversion -Wold-style-cast)
if(APPLE)
    # A call that the oldest system aimed at lacks would be null there. That one is deprecated is no reason to warn: the
    # File, Dialog and Process Managers, which the product works with, are so as a whole.
    add_compile_options(-Wunguarded-availability -Wno-deprecated-declarations)
    # Compilers take the older library for systems before 10.9, which has no C++17.
    add_compile_options(-stdlib=libc++)
    add_link_options(-stdlib=libc++)
endif()
if(CVBASE_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

# a * b + c keeps its two roundings on every processor: number formatting and the sample conversions promise exact bits.
add_compile_options(-ffp-contract=off)
# For the same reason 32-bit Intel computes in SSE registers, which every Mac of that kind has: the older unit keeps
# more bits.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CV_FOR_INTEL)
    add_compile_options(-msse2 -mfpmath=sse)
endif()

# Sizes and positions of files are 64-bit on 32-bit Linux too, as they always are on a Mac, and times go past
# 2038 there.
add_compile_definitions(_FILE_OFFSET_BITS=64 $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>:_TIME_BITS=64>)

# Nothing is loaded with a program that it calls nothing of.
if(NOT APPLE)
    add_link_options(-Wl,--as-needed -Wl,-O1)
endif()

# cv_set_library_version(target)
#
# Makes `target` a library of the package, for C++17 and above. A shared one carries the project's version, its major
# number in the name that programs load it by, and shows what the public headers declare: what the standard library's
# templates made inside stays inside.
function(cv_set_library_version target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL SHARED_LIBRARY AND NOT APPLE)
        set(map ${PROJECT_SOURCE_DIR}/cmake/CvBaseSymbols.map)
        target_link_options(${target} PRIVATE -Wl,--version-script=${map})
        set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map} INSTALL_RPATH "\$ORIGIN")
    endif()
endfunction()

if(CVBASE_SANITIZERS)
    add_compile_options(-fsanitize=${CVBASE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${CVBASE_SANITIZERS})
endif()

# What ccache has compiled before, in whatever build folder, is not compiled again. Where there is no ccache, or another
# launcher was chosen, nothing is different.
find_program(CVBASE_CCACHE ccache)
mark_as_advanced(CVBASE_CCACHE)
if(CVBASE_CCACHE AND PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CVBASE_CCACHE})
endif()
