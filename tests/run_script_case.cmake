# Runs one script case: copies CASE (and CASE's .files folder, if any) into a fresh WORK folder,
# runs `kerrin -i NAME.script` there, and compares standard output with the .out file byte for byte.
# Fails as well on a non-zero exit code and on a leak report on standard error.
get_filename_component(name ${CASE} NAME_WE)
get_filename_component(dir ${CASE} DIRECTORY)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
if(EXISTS ${dir}/${name}.files)
  file(COPY ${dir}/${name}.files/ DESTINATION ${WORK})
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
