# Removes the files that MANIFEST names, as the last installation wrote it, and the folders that are empty then. DESTDIR
# is heeded as it was for installing.

if(NOT EXISTS ${MANIFEST})
    message(FATAL_ERROR "Nothing was installed from this build: ${MANIFEST} is missing")
endif()

file(STRINGS ${MANIFEST} files)
foreach(file IN LISTS files)
    set(path "$ENV{DESTDIR}${file}")
    if(EXISTS "${path}" OR IS_SYMLINK "${path}")
        file(REMOVE "${path}")
        message("-- Removed: ${path}")
    endif()
    get_filename_component(folder "${path}" DIRECTORY)
    list(APPEND folders "${folder}")
endforeach()

# Only folders of this project's own: their parents belong to the system, empty or not.
set(own "/(cvbase(-[0-9]+)?|CvBase|CvPlatform|share/installer-host|CorvaneInstall\\.bundle)(/|$)")
while(folders)
    list(REMOVE_DUPLICATES folders)
    list(POP_FRONT folders folder)
    file(GLOB entries LIST_DIRECTORIES TRUE "${folder}/*")
    if("${folder}" MATCHES "${own}" AND IS_DIRECTORY "${folder}" AND NOT entries)
        file(REMOVE_RECURSE "${folder}")
        get_filename_component(parent "${folder}" DIRECTORY)
        list(APPEND folders "${parent}")
    endif()
endwhile()
