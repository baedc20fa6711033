# Installs the build in BUILD_FOLDER, builds EXAMPLES against what was installed, and runs what came out.

function(run output)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nended with ${status}:\n${text}")
    endif()
    set(${output} "${text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_FOLDER})
set(installed ${WORK_FOLDER}/installed)
run(ignored ${CMAKE_COMMAND} --install ${BUILD_FOLDER} --prefix ${installed})
run(ignored ${CMAKE_COMMAND} -S ${EXAMPLES} -B ${WORK_FOLDER}/examples -DCMAKE_PREFIX_PATH=${installed}
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=${FLAGS})
run(ignored ${CMAKE_COMMAND} --build ${WORK_FOLDER}/examples)

file(WRITE ${WORK_FOLDER}/three-lines.txt "1\n2\n3\n")
run(report ${WORK_FOLDER}/examples/file_report ${WORK_FOLDER}/three-lines.txt)
if(NOT report STREQUAL "three-lines.txt in ${WORK_FOLDER}/: 3 lines, 6 bytes\n")
    message(FATAL_ERROR "file_report printed: ${report}")
endif()
run(report ${installed}/bin/installer-host check ${installed}/lib/CorvaneInstall.bundle)
set(root ${WORK_FOLDER}/root)
file(MAKE_DIRECTORY ${root})
run(report ${installed}/bin/installer-host run --product=5100 --root=${root} ${installed}/lib/CorvaneInstall.bundle)
if(NOT EXISTS ${root}/Library/Preferences/com.corvane.updater.plist)
    message(FATAL_ERROR "nothing was stored:\n${report}")
endif()
# The module of the Trash finds the libraries that it needs.
run(ignored python3 -c "import ctypes, sys; ctypes.CDLL(sys.argv[1]).CvMoveToTrash"
    ${installed}/lib/CvPlatform/CvTrash.so)
# The program that shows alerts is found: it is what finds no display. The "Yes" that is taken then is status 0.
run(asked ${CMAKE_COMMAND} -E env --unset=WAYLAND_DISPLAY DISPLAY=:77 ${WORK_FOLDER}/examples/ask "Really?")
if(NOT asked MATCHES "the display does not answer")
    message(FATAL_ERROR "ask printed: ${asked}")
endif()
