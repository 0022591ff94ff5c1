# Tests: of the house rules, of every preset; coverage; benchmarks; the formatting of sources, the generated page.

# What the sanitizers do when they find something: end the test at once.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
# A process waits a tenth of a second at its end for races of threads that are still there, instead of a whole one: there
# are thousands of processes.
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1:atexit_sleep_ms=100}

# The rules no compiler knows; all of them run, then any failure counts.
house_checks() {
  local check failed=0
  begin "checks of the sources"
  for check in scripts/check-*; do
    "$check" || failed=1
  done
  python3 -m unittest discover -q -s scripts/test || failed=1
  end
  [ "$failed" -eq 0 ] || fail "the checks named above failed"
}

COVERAGE=build/coverage

# Runs the service's unit tests where what they reach is counted. Counts of tests that failed are worth nothing.
count_coverage() {
  build coverage
  begin "what the unit tests of the service reach"
  rm -rf $COVERAGE/profiles
  if ! ctest --test-dir $COVERAGE/ClimateS -j "$JOBS" --output-on-failure --no-tests=error </dev/null >$COVERAGE/tests.log 2>&1; then
    rm -rf $COVERAGE/profiles
    cat $COVERAGE/tests.log
  fi
  end
}

# Runs the tests of the given presets, of the service's coverage ("coverage"), of the installed packages (the word "package") and on the emulated board ("vm"),
# as one ctest run with one summary, which is the last thing printed.
run_tests() {
  local all=build/all part
  mkdir -p $all
  for part in "$@"; do
    if [ "$part" = coverage ]; then
      echo "add_test(Coverage \"$PWD/scripts/coverage.py\" \"$PWD/$COVERAGE\")"
      echo "set_tests_properties(Coverage PROPERTIES LABELS coverage TIMEOUT 600)"
    elif [ "$part" = package ]; then
      echo "add_test(Packages \"$PWD/packaging/test/installed_test.py\" \"$PWD/$PACKAGES\")"
      echo "set_tests_properties(Packages PROPERTIES LABELS package TIMEOUT 600)"
    elif [ "$part" = vm ]; then
      echo "add_test(EmulatedBoard \"$PWD/Board/vm/board_test.py\" \"$PWD/$VM_IMAGE\")"
      echo "set_tests_properties(EmulatedBoard PROPERTIES LABELS vm TIMEOUT 600)"
    else
      echo "subdirs(\"../$part\")"
    fi
  done >$all/CTestTestfile.cmake
  echo "== tests of: $*"
  "${steady[@]}" ctest --test-dir $all -j "$JOBS" --output-on-failure --no-label-summary --no-tests=error </dev/null
}

build_all() {
  local preset
  for preset in "$@"; do
    build "$preset"
  done
}

dev_test() {
  dev_setup base
  house_checks
  local presets=${CLM_TEST_PRESETS:-debug asan-ubsan tsan} coverage= package= vm=
  [[ " $presets " != *" clang "* ]] || dev_setup clang
  build_all $presets
  if [ -z "${CLM_TEST_PRESETS:-}" ] && optional "the coverage" coverage; then
    count_coverage
    scripts/coverage.py $COVERAGE || true # a test of its own says so
    coverage=coverage
  fi
  if [ -z "${CLM_TEST_PRESETS:-}" ] && optional "the packages" package; then
    make_packages
    package=package
  fi
  if [ -z "${CLM_TEST_PRESETS:-}" ] && vm_possible; then
    vm_image
    vm=vm
  fi
  run_tests $presets $coverage $package $vm
}

dev_sanitize() {
  dev_setup base
  build_all asan-ubsan tsan
  run_tests asan-ubsan tsan
}

dev_coverage() {
  dev_setup base coverage
  count_coverage
  scripts/coverage.py $COVERAGE --report $COVERAGE/report
}

dev_bench() {
  dev_setup base
  build release clm_bench
  build/release/bench/clm_bench "$@"
}

dev_format() {
  dev_setup base
  sources | xargs -0 clang-format -i
}

dev_docs() {
  dev_setup base
  scripts/layouts.py
}
