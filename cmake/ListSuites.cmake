# Run after each build of a test program: asks it for its suites and writes FILE, by which ctest knows one test per suite.
# PROGRAM and EMULATOR (before it, or empty), PREFIX and SUFFIX around the names, LABELS, SECONDS for each test of a suite,
# and ENVIRONMENT beyond that.
execute_process(COMMAND ${EMULATOR} ${PROGRAM} --gtest_list_tests
  OUTPUT_VARIABLE listing RESULT_VARIABLE status TIMEOUT 60)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} cannot list its tests: ${status}\n${listing}")
endif()
string(REPLACE "\n" ";" lines "${listing}")
set(text "")
foreach(line IN LISTS lines)
  # "Suite." or "Suite.  # TypeParam = ..."; what is indented is one of its tests.
  if(line MATCHES "^([^ #]+)\\.( |$)")
    set(suite ${CMAKE_MATCH_1})
    set(name "${PREFIX}${suite}${SUFFIX}")
    string(APPEND text "add_test([==[${name}]==] ${EMULATOR} [==[${PROGRAM}]==] [==[--gtest_filter=${suite}.*]==])\n"
      "set_tests_properties([==[${name}]==] PROPERTIES TIMEOUT 1800 SKIP_RETURN_CODE 77 LABELS [==[${LABELS}]==]"
      " ENVIRONMENT [==[CLM_TEST_SECONDS=${SECONDS};${ENVIRONMENT}]==])\n")
  endif()
endforeach()
file(WRITE ${FILE} "${text}")
