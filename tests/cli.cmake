# The command lines of the engine and its tools, as a new user meets them: --help and --version,
# a missing first script, errors no script handles, a file that is no chunk file, and the mesh
# tool's warnings. KERRIN, TOOLS (folder of the tool builds), VERSION and WORK are given.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# Runs a command in WORK; fails unless the exit code is `code` and each pattern of `patterns`
# matches its standard output (out:...) or error (err:...).
function(expect code)
  cmake_parse_arguments(E "" "" "COMMAND;MATCH" ${ARGN})
  execute_process(COMMAND ${E_COMMAND} WORKING_DIRECTORY ${WORK}
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE result TIMEOUT 30)
  if(NOT result STREQUAL "${code}")
    message(FATAL_ERROR "${E_COMMAND}: exit code ${result}, not ${code}\n--- stdout\n${out}--- stderr\n${err}")
  endif()
  foreach(m ${E_MATCH})
    string(REGEX REPLACE "^(out|err):" "" pattern "${m}")
    if(m MATCHES "^out:")
      set(text "${out}")
    else()
      set(text "${err}")
    endif()
    if(NOT text MATCHES "${pattern}")
      message(FATAL_ERROR "${E_COMMAND}: no match for ${m}\n--- stdout\n${out}--- stderr\n${err}")
    endif()
  endforeach()
endfunction()

expect(0 COMMAND ${KERRIN} --help MATCH "out:usage: kerrin" "out:working directory")
expect(0 COMMAND ${KERRIN} --version MATCH "out:^kerrin ${VERSION}\n$")
expect(2 COMMAND ${KERRIN} MATCH "err:no first script: \"init.script\"" "err:usage: kerrin")
expect(2 COMMAND ${KERRIN} -i misspelt.script MATCH "err:\"misspelt.script\" was not found")
foreach(tool dump font mesh pack sound split texture)
  expect(0 COMMAND ${TOOLS}/${tool}/kerrin-${tool} --help MATCH "out:^usage: kerrin-${tool}")
endforeach()

# An error no handler hears goes to standard error with its file and line; standard output is
# the script's alone.
file(WRITE ${WORK}/first.script "print \"out\";\nload(\"missing.script\");\nquit;\n")
expect(0 COMMAND ${KERRIN} -i first.script
  MATCH "out:^out\n$" "err:Scripting error in \"first.script\" at line 2\nFile \"missing.script\" not found!")

expect(1 COMMAND ${TOOLS}/dump/kerrin-dump first.script MATCH "err:first.script: not a chunk file")
expect(1 COMMAND ${TOOLS}/dump/kerrin-dump absent.kr MATCH "err:cannot open absent.kr: No such file")

# A model whose material file is missing, and one whose material has no ambient colour and names
# an image that is not there and that the mesh will name by another name.
file(WRITE ${WORK}/lost.obj "mtllib lost.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n")
expect(0 COMMAND ${TOOLS}/mesh/kerrin-mesh lost.obj lost.mesh MATCH "err:Material file \\[ lost.mtl \\] not found")
file(WRITE ${WORK}/plain.obj "mtllib plain.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n")
file(WRITE ${WORK}/plain.mtl "newmtl red\nKd 1 0 0\nmap_Kd red.png\n")
expect(0 COMMAND ${TOOLS}/mesh/kerrin-mesh plain.obj plain.mesh
  MATCH "err:material 'red' has no ambient colour" "err:texture 'red.png' of material 'red' is not there"
        "err:named 'red.dds' in the mesh")
expect(1 COMMAND ${TOOLS}/mesh/kerrin-mesh absent.obj x.mesh MATCH "err:cannot read 'absent.obj': No such file")
