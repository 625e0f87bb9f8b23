# cmake -DRESULTS=<folder> -DSTATUS=<exit status of ctest> -P sum_test_results.cmake
#
# Prints "PASSED FAILED" for one run of CTest whose JUnit file is <folder>/ctest.junit. A test program
# that wrote its own results, <folder>/<test name>.xml, counts with each of its cases; any other
# CTest entry counts as one test. A program that failed without reporting a failed case (a crash, a
# time-out, a sanitizer's finding) counts as one more failure.
cmake_minimum_required(VERSION 3.25)

set(passed 0)
set(failed 0)
if(EXISTS ${RESULTS}/ctest.junit)
  file(STRINGS ${RESULTS}/ctest.junit entries REGEX "<testcase ")
else()
  set(entries "")
endif()

foreach(entry IN LISTS entries)
  string(REGEX REPLACE ".*<testcase name=\"([^\"]*)\".*" "\\1" name "${entry}")
  string(REGEX REPLACE ".* status=\"([^\"]*)\".*" "\\1" outcome "${entry}")
  set(case_failures 0)
  if(EXISTS ${RESULTS}/${name}.xml)
    file(STRINGS ${RESULTS}/${name}.xml totals REGEX "<testsuites " LIMIT_COUNT 1)
    file(STRINGS ${RESULTS}/${name}.xml skipped REGEX "<skipped ")
    list(LENGTH skipped case_skips)
    string(REGEX REPLACE ".*<testsuites tests=\"([0-9]+)\" failures=\"([0-9]+)\".*" "\\1;\\2"
      numbers "${totals}")
    list(GET numbers 0 cases)
    list(GET numbers 1 case_failures)
    math(EXPR passed "${passed} + ${cases} - ${case_failures} - ${case_skips}")
    math(EXPR failed "${failed} + ${case_failures}")
  elseif(outcome STREQUAL "run")
    math(EXPR passed "${passed} + 1")
  endif()
  if(NOT outcome STREQUAL "run" AND NOT outcome STREQUAL "disabled" AND case_failures EQUAL 0)
    math(EXPR failed "${failed} + 1")
  endif()
endforeach()

if(failed EQUAL 0 AND (NOT STATUS EQUAL 0 OR passed EQUAL 0))
  math(EXPR failed "${failed} + 1")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E echo "${passed} ${failed}")
