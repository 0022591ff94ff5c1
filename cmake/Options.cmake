# How everything is compiled: the language, the warnings, the sanitizers of the chosen preset, the defences.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # 64-bit time on every 32-bit target, be it built there or from elsewhere: times beyond 2038 work.
  add_compile_definitions(_TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()

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

# Built for defence; packaging/test/defence.py looks for each of these in the programs.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
add_compile_options(-fstack-protector-strong)
add_compile_definitions(_GLIBCXX_ASSERTIONS)
if(NOT CLM_SANITIZE)
  # Needs an optimiser, and hides from a sanitizer what it is there for.
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
endif()
# What the target's processor has: landing marks for jumps and signed or shadowed returns, one touch a page of the stack.
foreach(option -fcf-protection=full -mbranch-protection=standard -fstack-clash-protection)
  string(MAKE_C_IDENTIFIER "CLM_HAS${option}" has)
  check_cxx_compiler_flag("${option} -Werror" ${has})
  if(${has})
    add_compile_options(${option})
  endif()
endforeach()
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

# Code and constants of a library share a mapping: a start maps and touches fewer pages.
add_link_options($<$<CONFIG:Release>:-Wl,-z,noseparate-code>)

find_package(Threads REQUIRED)
find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
