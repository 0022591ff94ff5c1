# GoogleTest and the one way to add a test program. Every test runs in a process of its own (testing/), and every suite is one
# test of ctest.
enable_testing()

# What tells the tests of one preset from those of another when several run together.
set(CLM_TEST_SUFFIX "" CACHE STRING "end of every test's name, e.g. [tsan]")

if(CMAKE_CROSSCOMPILING)
  # The target has no packaged GoogleTest; Debian ships its sources (package googletest).
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(target gtest gtest_main gmock gmock_main)
    target_compile_options(${target} PRIVATE -w)
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET default)
  endforeach()
  set(CLM_TEST_SECONDS 300)  # emulation is slow
else()
  find_package(GTest REQUIRED)
  set(CLM_TEST_SECONDS 120)
endif()

add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/../testing ${CMAKE_BINARY_DIR}/testing)

set(CLM_TEST_ENVIRONMENT)
if(CLM_COVERAGE)
  # Two files a program, which its processes add to in turn.
  set(CLM_TEST_ENVIRONMENT LLVM_PROFILE_FILE=${CMAKE_BINARY_DIR}/profiles/%2m.profraw)
endif()

# clm_register_test(NAME [PREFIX prefix] [LABELS labels...] [ENVIRONMENT variables...]): the suites of a test program, as
# ctest is to run them; a program may be registered more than once, with prefixes of its own.
function(clm_register_test name)
  cmake_parse_arguments(ARG "" "PREFIX" "LABELS;ENVIRONMENT" ${ARGN})
  string(MAKE_C_IDENTIFIER "${name}_${ARG_PREFIX}" file)
  set(file ${CMAKE_CURRENT_BINARY_DIR}/${file}.cmake)
  add_custom_command(TARGET ${name} POST_BUILD VERBATIM COMMAND ${CMAKE_COMMAND}
    -D "PROGRAM=$<TARGET_FILE:${name}>" -D "EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}" -D "FILE=${file}"
    -D "PREFIX=${ARG_PREFIX}" -D "SUFFIX=${CLM_TEST_SUFFIX}" -D "LABELS=${ARG_LABELS}" -D "SECONDS=${CLM_TEST_SECONDS}"
    -D "ENVIRONMENT=${CLM_TEST_ENVIRONMENT};${ARG_ENVIRONMENT}"
    -P ${PROJECT_SOURCE_DIR}/cmake/ListSuites.cmake)
  file(WRITE ${file}.include "if(EXISTS \"${file}\")\n  include(\"${file}\")\nelse()\n"
    "  add_test(${name}_NOT_BUILT ${name}_NOT_BUILT)\nendif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${file}.include)
endfunction()

# clm_add_test(NAME sources... LIBRARIES libraries... [PREFIX prefix] [LABELS labels...])
function(clm_add_test name)
  cmake_parse_arguments(ARG "" "PREFIX" "LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} test_main GTest::gtest Threads::Threads)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" OR CLM_SANITIZE)
    # To optimise tests takes longer than they ever save; what FORTIFY adds needs an optimiser.
    target_compile_options(${name} PRIVATE -O0 -U_FORTIFY_SOURCE)
  endif()
  clm_register_test(${name} PREFIX "${ARG_PREFIX}" LABELS ${ARG_LABELS})
endfunction()
