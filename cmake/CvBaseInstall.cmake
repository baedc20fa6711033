# `cmake --install`: the library as a package that other projects find with find_package(CvBase), the bundle and the host.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/CvBase)

set(libraries CvBase UINative)
if(NOT APPLE)
    list(APPEND libraries platform)
    install(DIRECTORY platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/CvPlatform)
    target_include_directories(platform INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/CvPlatform>)
    if(TARGET cv-alert)
        install(TARGETS cv-alert DESTINATION ${CMAKE_INSTALL_LIBDIR}/CvPlatform)
    endif()
    install(TARGETS CvTrash DESTINATION ${CMAKE_INSTALL_LIBDIR}/CvPlatform)
    set_target_properties(CvTrash PROPERTIES INSTALL_RPATH "\$ORIGIN/..")
endif()
install(TARGETS ${libraries} EXPORT CvBaseTargets FILE_SET HEADERS)
install(EXPORT CvBaseTargets NAMESPACE CvBase:: DESTINATION ${package_folder})
configure_package_config_file(cmake/CvBaseConfig.cmake.in ${PROJECT_BINARY_DIR}/CvBaseConfig.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CvBaseConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CvBaseConfig.cmake ${PROJECT_BINARY_DIR}/CvBaseConfigVersion.cmake
    DESTINATION ${package_folder})

if(NOT APPLE)
    install(TARGETS installer-host)
    install(TARGETS installer-host-worker DESTINATION ${CMAKE_INSTALL_LIBEXECDIR})
    install(FILES docs/report.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/installer-host)
    install(FILES docs/installer-host.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    set_target_properties(installer-host-worker PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(CorvaneInstall PROPERTIES INSTALL_RPATH "\$ORIGIN/../../..")
endif()
install(DIRECTORY ${PROJECT_BINARY_DIR}/CorvaneInstall.bundle DESTINATION ${CMAKE_INSTALL_LIBDIR}
    USE_SOURCE_PERMISSIONS PATTERN CorvaneInstall EXCLUDE)
install(TARGETS CorvaneInstall
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/CorvaneInstall.bundle/Contents/${CV_BUNDLE_CODE_FOLDER})
