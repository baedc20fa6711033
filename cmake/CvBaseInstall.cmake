# `cmake --install`: the library as a package that other projects find with find_package(CvBase) or pkg-config, the bundle
# and the host. Everything may be moved afterwards, all of it together.

include(CMakePackageConfigHelpers)

set(CV_ZSH_COMPLETION_FOLDER zsh/site-functions CACHE STRING "Where zsh finds completions, below share")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/CvBase)
set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/cvbase-${PROJECT_VERSION_MAJOR})

# cv_install_library(target EXPORT export)
function(cv_install_library target)
    cmake_parse_arguments(arg "" "EXPORT" "" ${ARGN})
    install(TARGETS ${target} EXPORT ${arg_EXPORT}
        LIBRARY COMPONENT Library NAMELINK_COMPONENT Development
        ARCHIVE COMPONENT Development
        FILE_SET HEADERS DESTINATION ${header_folder} COMPONENT Development)
endfunction()

if(NOT APPLE)
    cv_install_library(CvBase_platform EXPORT CvBaseTargets)
    # The Mac's names stand in a folder that only those who use the library look into. <sys/mount.h> is a name that Linux
    # has as well, and no public header needs the Mac's.
    install(DIRECTORY platform/include/ DESTINATION ${header_folder}/platform COMPONENT Development
        PATTERN sys/mount.h EXCLUDE)
    target_include_directories(CvBase_platform INTERFACE $<INSTALL_INTERFACE:${header_folder}/platform>)
    foreach(companion IN ITEMS CvBase_alert CvBase_Trash)
        if(TARGET ${companion})
            install(TARGETS ${companion} DESTINATION ${CMAKE_INSTALL_LIBDIR}/CvPlatform COMPONENT Desktop)
        endif()
    endforeach()
    set_target_properties(CvBase_Trash PROPERTIES INSTALL_RPATH "\$ORIGIN/..")
endif()
cv_install_library(CvBase EXPORT CvBaseTargets)
cv_install_library(CvBaseUINative EXPORT CvBaseUINativeTargets)
foreach(export IN ITEMS CvBaseTargets CvBaseUINativeTargets)
    install(EXPORT ${export} NAMESPACE CvBase:: DESTINATION ${package_folder} COMPONENT Development)
endforeach()
configure_package_config_file(cmake/CvBaseConfig.cmake.in ${PROJECT_BINARY_DIR}/CvBaseConfig.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CvBaseConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CvBaseConfig.cmake ${PROJECT_BINARY_DIR}/CvBaseConfigVersion.cmake
    DESTINATION ${package_folder} COMPONENT Development)

file(RELATIVE_PATH pc_prefix /x/${CMAKE_INSTALL_LIBDIR}/pkgconfig /x)
foreach(name IN ITEMS cvbase cvbase-uinative)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
endforeach()

install(FILES docs/guide.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/cvbase COMPONENT Development)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/cvbase COMPONENT Development)

# For whoever writes a plug-in of the same kind.
install(FILES plugin/InstallerInterface.h plugin/ParamBlock.h DESTINATION ${header_folder}/plugin COMPONENT Development)

if(NOT APPLE)
    install(TARGETS installer-host COMPONENT Host)
    install(TARGETS installer-host-worker DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT Host)
    install(FILES docs/report.schema.json docs/journal.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/installer-host COMPONENT Host)
    install(FILES docs/installer-host.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Host)
    set(completion ${PROJECT_BINARY_DIR}/installer-host/completion/installer-host)
    install(FILES ${completion}.bash RENAME installer-host
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Host)
    install(FILES ${completion}.zsh RENAME _installer-host
        DESTINATION ${CMAKE_INSTALL_DATADIR}/${CV_ZSH_COMPLETION_FOLDER} COMPONENT Host)
    install(FILES ${completion}.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT Host)
    set_target_properties(installer-host-worker PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(CorvaneInstall PROPERTIES INSTALL_RPATH "\$ORIGIN/../../..")
endif()
install(DIRECTORY ${PROJECT_BINARY_DIR}/CorvaneInstall.bundle DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT PlugIn
    USE_SOURCE_PERMISSIONS PATTERN CorvaneInstall EXCLUDE)
install(TARGETS CorvaneInstall
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/CorvaneInstall.bundle/Contents/${CV_BUNDLE_CODE_FOLDER} COMPONENT PlugIn)

add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake
    COMMENT "Removing what was installed last")
