# Read by ctest before it runs (a test include file): one test gl.SUITE for every test suite of
# the window test program, run as a whole under its own launcher (a virtual display) with the
# environment the group needs. A program that cannot list its tests becomes one failing test.
# Set by the includer: GL_TESTS, GL_LAUNCHER (a list, may be empty), GL_ENVIRONMENT (a list).
execute_process(COMMAND ${GL_TESTS} --gtest_list_tests
  OUTPUT_VARIABLE listing ERROR_VARIABLE errors RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  add_test(gl.discovery ${CMAKE_COMMAND} -E echo "listing the tests of ${GL_TESTS} failed: ${errors}")
  set_tests_properties(gl.discovery PROPERTIES WILL_FAIL TRUE)
  return()
endif()
# Suite lines stand at the start of a line and end in a dot; test names below are indented.
string(REPLACE "\n" ";" lines "${listing}")
foreach(line ${lines})
  if(line MATCHES "^([A-Za-z0-9_]+)\\.")
    set(suite ${CMAKE_MATCH_1})
    add_test(gl.${suite} ${GL_LAUNCHER} ${GL_TESTS} --gtest_filter=${suite}.*)
    set_tests_properties(gl.${suite} PROPERTIES ENVIRONMENT "${GL_ENVIRONMENT}")
  endif()
endforeach()
