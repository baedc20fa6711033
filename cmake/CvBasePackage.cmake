# `cpack`: the Debian packages. `make package` builds them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Corvane)
set(CPACK_PACKAGE_CONTACT "Corvane <developers@corvane.com>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has one of its own
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/PackageFiles.cmake)
set(CPACK_CVBASE_SOURCE_DIR ${PROJECT_SOURCE_DIR})

set(CPACK_COMPONENTS_ALL Library Desktop Development PlugIn Host)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

# cv_package(component NAME name SECTION section [DEPENDS text] [RECOMMENDS text] TEXT line...)
#
# The first line of TEXT is the summary.
macro(cv_package component)
    cmake_parse_arguments(arg "" "NAME;SECTION;DEPENDS;RECOMMENDS" "TEXT" ${ARGN})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${arg_NAME})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${arg_SECTION})
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${arg_DEPENDS}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}")
    list(JOIN arg_TEXT "\n" CPACK_DEBIAN_${upper}_DESCRIPTION)
endmacro()

set(same_version "= ${PROJECT_VERSION}-1")
cv_package(Library NAME libcvbase1 SECTION libs RECOMMENDS cvbase-desktop
    TEXT "base library for audio products"
        "Shared text, paths, files, byte streams and sample conversion for C++"
        "programs, and the few interfaces of the Mac that they stand on.")
cv_package(Desktop NAME cvbase-desktop SECTION utils DEPENDS "libcvbase1 (${same_version})"
    TEXT "alerts and the Trash for programs that use CvBase"
        "The program that shows CvBase's alerts on a display, and the module that"
        "moves files to the Trash. Without them alerts are asked on the terminal,"
        "and files stay where they are.")
cv_package(Development NAME libcvbase-dev SECTION libdevel DEPENDS "libcvbase1 (${same_version})"
    TEXT "base library for audio products, development files"
        "Headers, CMake and pkg-config files, a guide and examples for programs"
        "that use CvBase.")
cv_package(PlugIn NAME corvane-install SECTION admin DEPENDS "libcvbase1 (${same_version})"
    TEXT "installer plug-in of Corvane's audio products"
        "The bundle that an installer loads, and that leaves a machine configured"
        "for a newly installed product. The package installer-host runs it.")
cv_package(Host NAME installer-host SECTION admin
    DEPENDS "libcvbase1 (${same_version}), bubblewrap" RECOMMENDS corvane-install
    TEXT "installer plug-ins run in a private root, with a report of the changes"
        "Loads an installer plug-in inside a private root, runs its steps, and"
        "reports exactly what is different on the disk afterwards.")

include(CPack)
