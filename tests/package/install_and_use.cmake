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
run(ignored ${CMAKE_COMMAND} -S ${EXAMPLES} -B ${WORK_FOLDER}/examples -G Ninja -DCMAKE_PREFIX_PATH=${installed}
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=${FLAGS})
run(ignored ${CMAKE_COMMAND} --build ${WORK_FOLDER}/examples)

# expect(NAME argument...) runs an example in WORK_FOLDER/files and compares what it prints with expected/NAME.txt.
set(files ${WORK_FOLDER}/files)
function(expect name)
    execute_process(COMMAND ${WORK_FOLDER}/examples/${name} ${ARGN} WORKING_DIRECTORY ${files}
        OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
    string(REPLACE ${files} FILES printed "${printed}")
    string(REGEX REPLACE "File \\([0-9]+\\)" "File (LINE)" printed "${printed}")
    file(READ ${CMAKE_CURRENT_LIST_DIR}/expected/${name}.txt expected)
    if(NOT printed STREQUAL expected)
        message(FATAL_ERROR "${name} printed:\n${printed}\nand not:\n${expected}")
    endif()
endfunction()
set(ENV{LC_ALL} C)
file(WRITE ${files}/three-lines.txt "1\n2\n3\n")
file(WRITE ${files}/Notes.TXT "")
file(WRITE ${files}/folder/inside.txt "")
# Every 16-bit sample, written by another program than ours.
run(ignored python3 -c "import array, sys, wave
with wave.open(sys.argv[1], 'wb') as out:
    out.setparams((1, 2, 48000, 0, 'NONE', ''))
    out.writeframes(array.array('h', range(-32768, 32768)).tobytes())" ${files}/every.wav)
expect(texts)
expect(file_report three-lines.txt missing.txt)
expect(find_files . *.txt inside.txt)
expect(presets ${files}/hall.preset)
expect(wav_error every.wav)
expect(wav_round_trip every.wav same.wav)
run(ignored ${CMAKE_COMMAND} -E compare_files ${files}/every.wav ${files}/same.wav)

# The guide's pieces of code, through pkg-config.
run(ignored python3 ${CMAKE_CURRENT_LIST_DIR}/guide_program.py ${CMAKE_CURRENT_LIST_DIR}/../../docs/guide.md
    ${WORK_FOLDER}/guide.cpp ${WORK_FOLDER}/guide.txt)
run(ignored sh -c "PKG_CONFIG_PATH=$(dirname $(find ${installed} -name cvbase.pc)) &&
    export PKG_CONFIG_PATH && ${COMPILER} ${FLAGS} -std=c++17 -Wall -Wextra -Werror ${WORK_FOLDER}/guide.cpp \
        -o ${WORK_FOLDER}/guide $(pkg-config --cflags --libs cvbase) -Wl,-rpath,$(pkg-config --variable=libdir cvbase)")
run(printed ${WORK_FOLDER}/guide)
file(READ ${WORK_FOLDER}/guide.txt expected)
if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "the guide's program printed:\n${printed}\nand not:\n${expected}")
endif()

set(root ${WORK_FOLDER}/own-root)
file(MAKE_DIRECTORY ${root})
foreach(count IN ITEMS 1 2)
    run(report ${installed}/bin/installer-host run --product=1 --root=${root} ${WORK_FOLDER}/examples/OwnPlugIn.bundle)
    if(NOT report MATCHES "com.example.ownplugin\n[^\n]*Installations\"[^\n]* ${count} \\(integer\\)")
        message(FATAL_ERROR "The plug-in did not store ${count}:\n${report}")
    endif()
endforeach()

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
