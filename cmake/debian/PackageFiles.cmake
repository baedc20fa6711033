# What Debian wants of each package beside the files installed: run by cpack on what it is about to pack.

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})
    set(doc ${root}/usr/share/doc/${name})
    configure_file(${CPACK_CVBASE_SOURCE_DIR}/cmake/debian/copyright.in ${doc}/copyright @ONLY)
    file(READ ${CPACK_CVBASE_SOURCE_DIR}/NOTICE.md notice)
    file(APPEND ${doc}/copyright "${notice}")
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
    file(WRITE ${doc}/changelog.Debian
        "${name} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}; changelog.gz tells what is new.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    configure_file(${CPACK_CVBASE_SOURCE_DIR}/CHANGELOG.md ${doc}/changelog COPYONLY)
    set(overrides ${CPACK_CVBASE_SOURCE_DIR}/cmake/debian/${name}.lintian-overrides)
    if(EXISTS ${overrides})
        configure_file(${overrides} ${root}/usr/share/lintian/overrides/${name} COPYONLY)
    endif()
    file(GLOB compressed ${doc}/changelog* ${root}/usr/share/man/*/*.[1-9])
    execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND chmod -R u+rwX,go=rX ${root} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
