# How everything is compiled: the language, the warnings, the sanitizers of the chosen preset.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Sanitizers of the whole build, as -fsanitize= takes them; empty for none.
set(CLM_SANITIZE "" CACHE STRING "sanitizers, e.g. address,undefined")
# Counters of the service's lines and branches, for ./dev coverage; with clang, which counts the branches of the sources
# and none of its own.
option(CLM_COVERAGE "count what of the service is reached" OFF)
# Programs that need a host library beyond the C++ runtime for the target (tests need GoogleTest in any case).
option(CLM_BENCH "build the benchmarks" ON)
# A folder with a board's own platform libraries, to link the daemon with (doc/porting.md); empty: the host's are built.
set(CLM_PLATFORM "" CACHE PATH "folder of a board's platform: lib/libQIS.so, libNUB.so, libGARDDAL.so, and include")
# A source that implements Platform/test/contract/Rig.h for that board; empty: no tests are built for it.
set(CLM_PLATFORM_RIG "" CACHE FILEPATH "rig of the board, to run the contract's tests on it")

add_compile_options(
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wformat=2 -Wformat-nonliteral
  -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Once it optimises, gcc 12 takes the unused members of a std::variant for uninitialised ones, and believes in
  # overlaps of a std::string with itself. What is certainly uninitialised stays an error; clang and the sanitizers see
  # the rest.
  add_compile_options(-Wno-maybe-uninitialized -Wno-restrict)
endif()

if(CLM_SANITIZE)
  add_compile_options(-fsanitize=${CLM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CLM_SANITIZE})
endif()

# Code and constants of a library share a mapping: a start maps and touches fewer pages.
add_link_options($<$<CONFIG:Release>:-Wl,-z,noseparate-code>)

find_package(Threads REQUIRED)
find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
