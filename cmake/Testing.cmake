# GoogleTest and the one way to add a test program: every test becomes a ctest entry of its own, run in its own process.
enable_testing()
include(GoogleTest)

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
else()
  find_package(GTest REQUIRED)
endif()

# clm_add_test(NAME sources... LIBRARIES libraries... [PREFIX prefix] [LABELS labels...])
set(counted)
if(CLM_COVERAGE)
  # Two files a program, which its processes add to in turn.
  set(counted ENVIRONMENT "LLVM_PROFILE_FILE=${CMAKE_BINARY_DIR}/profiles/%2m.profraw")
endif()

function(clm_add_test name)
  cmake_parse_arguments(ARG "" "PREFIX" "LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest_main Threads::Threads)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  if(CLM_SANITIZE)
    # To optimise tests takes longer than they ever save.
    target_compile_options(${name} PRIVATE -O0)
  endif()
  set(seconds 120)
  if(CMAKE_CROSSCOMPILING)
    set(seconds 300)  # emulation is slow
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${ARG_PREFIX}" TEST_SUFFIX "${CLM_TEST_SUFFIX}" DISCOVERY_TIMEOUT 60
    NO_PRETTY_VALUES PROPERTIES TIMEOUT ${seconds} ${counted} LABELS "${ARG_LABELS}")
endfunction()
