# Runs one script case: copies CASE (and CASE's .files folder, if any) into a fresh WORK folder,
# runs `kerrin -i NAME.script` there, and compares standard output with the .out file byte for byte.
# Fails as well on a non-zero exit code and on a leak report on standard error.
# With GAME given, that folder (a built game the case plays) is copied in first.
# With PACKER (the kerrin-pack tool) given, every folder named *.kr below CASE's .packs folder is
# packed into the same relative path of WORK, after the .files folder is copied; a file beside it
# with ".options" added holds kerrin-pack options for that pack (for example --method stored).
get_filename_component(name ${CASE} NAME_WE)
get_filename_component(dir ${CASE} DIRECTORY)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
if(GAME)
  file(COPY ${GAME}/ DESTINATION ${WORK})
endif()
if(EXISTS ${dir}/${name}.files)
  file(COPY ${dir}/${name}.files/ DESTINATION ${WORK})
endif()
if(PACKER AND EXISTS ${dir}/${name}.packs)
  file(GLOB_RECURSE packs LIST_DIRECTORIES true RELATIVE ${dir}/${name}.packs ${dir}/${name}.packs/*)
  foreach(pack ${packs})
    # Folders named *.kr only, and none inside another: that one is packed whole.
    if(NOT IS_DIRECTORY ${dir}/${name}.packs/${pack} OR NOT pack MATCHES "\\.kr$" OR pack MATCHES "\\.kr/")
      continue()
    endif()
    set(options)
    if(EXISTS ${dir}/${name}.packs/${pack}.options)
      file(READ ${dir}/${name}.packs/${pack}.options options)
      separate_arguments(options UNIX_COMMAND "${options}")
    endif()
    get_filename_component(packDir ${WORK}/${pack} DIRECTORY)
    file(MAKE_DIRECTORY ${packDir})
    execute_process(
      COMMAND ${PACKER} ${options} ${dir}/${name}.packs/${pack} ${WORK}/${pack}
      RESULT_VARIABLE packCode
      ERROR_VARIABLE packErr)
    if(NOT packCode EQUAL 0)
      message(FATAL_ERROR "packing ${pack} failed\n${packErr}")
    endif()
  endforeach()
endif()
file(COPY ${CASE} DESTINATION ${WORK})
execute_process(
  COMMAND ${KERRIN} -i ${name}.script
  WORKING_DIRECTORY ${WORK}
  OUTPUT_VARIABLE out
  ERROR_VARIABLE err
  RESULT_VARIABLE code
  TIMEOUT 60)
file(READ ${dir}/${name}.out expected)
if(NOT out STREQUAL expected)
  file(WRITE ${WORK}/actual.out "${out}")
  message(FATAL_ERROR "output differs from ${name}.out\n--- expected\n${expected}--- actual\n${out}--- stderr\n${err}")
endif()
if(NOT code EQUAL 0)
  message(FATAL_ERROR "exit code ${code}\n${err}")
endif()
if(err MATCHES "Possible memoryleak")
  message(FATAL_ERROR "leak report:\n${err}")
endif()
