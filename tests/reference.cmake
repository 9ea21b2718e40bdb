# The reference of the engine against the checked-in docs/reference.md: KERRIN prints it with
# --reference; with WRITE set the file is written anew, otherwise a difference fails.
execute_process(COMMAND ${KERRIN} --reference OUTPUT_VARIABLE printed ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "kerrin --reference failed with ${code}\n${err}")
endif()
if(WRITE)
  file(WRITE ${REFERENCE} "${printed}")
  return()
endif()
file(READ ${REFERENCE} checked)
if(NOT printed STREQUAL checked)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/reference.printed.md "${printed}")
  execute_process(COMMAND diff -u ${REFERENCE} ${CMAKE_CURRENT_BINARY_DIR}/reference.printed.md OUTPUT_VARIABLE changes)
  message(FATAL_ERROR "docs/reference.md differs from what the engine prints. Regenerate it with\n"
                      "    cmake --build build --target reference\n"
                      "and commit it.\n${changes}")
endif()
