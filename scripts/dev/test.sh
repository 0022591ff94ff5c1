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

# The rooms that have threads. The others are their clients, of which ./dev sanitize takes care, too.
THREADED=(Platform ClimateS)

# ctest_of PART: what ctest has to know of the tests of a preset, or of one of these:
#   threads   of the rooms that have threads, with the thread sanitizer
#   coverage  of what the unit tests of the service reach
#   package   of the installed packages
#   vm        on the emulated board
#   arm       of the bytes that the 32-bit ARM programs answer and write
ctest_of() {
  local name command
  case $1 in
    threads)
      printf 'subdirs("../tsan/%s")\n' "${THREADED[@]}"
      return
      ;;
    coverage) name=Coverage command="\"$PWD/scripts/coverage.py\" \"$PWD/$COVERAGE\"" ;;
    package) name=Packages command="\"$PWD/packaging/test/installed_test.py\" \"$PWD/$PACKAGES\"" ;;
    vm) name=EmulatedBoard command="\"$PWD/Board/vm/board_test.py\" \"$PWD/$VM_IMAGE\"" ;;
    arm) name=SameBytesAsArm command="ctest --test-dir \"$PWD/build/armhf\" --tests-regex ^Board/SameBytesTest --no-tests=error --output-on-failure" ;;
    *)
      echo "subdirs(\"../$1\")"
      return
      ;;
  esac
  echo "add_test($name $command)"
  echo "set_tests_properties($name PROPERTIES LABELS $1 TIMEOUT 600)"
}

# left_out LOG: names each test that ctest's log has as skipped, which a program with other tests passes with, and why.
left_out() {
  awk '/^SKIPPED / { name = $2; next }
       name && /: Skipped$/ { getline why; print "== left out: " name ": " why; name = "" }' "$1"
}

# run_tests PART...: as one ctest run with one summary; behind it, what the run left out.
run_tests() {
  local all=build/all part status=0
  mkdir -p $all
  for part in "$@"; do
    ctest_of "$part"
  done >$all/CTestTestfile.cmake
  echo "== tests of: $*"
  "${steady[@]}" ctest --test-dir $all -j "$JOBS" --output-on-failure --no-label-summary --no-tests=error </dev/null || status=$?
  left_out $all/Testing/Temporary/LastTest.log
  return $status
}

# build_all PART...: the presets named, and "threads".
build_all() {
  local part
  for part in "$@"; do
    if [ "$part" = threads ]; then
      build tsan "${THREADED[@]/%//all}"
    else
      build "$part"
    fi
  done
}

# Builds what the whole of ./dev test has beside the presets, and adds it to `parts`; what it cannot have it says.
build_more_parts() {
  if optional "the coverage" coverage; then
    count_coverage
    scripts/coverage.py $COVERAGE || true # the test of that name fails, too
    parts+=" coverage"
  fi
  if optional "the packages" package; then
    make_packages
    parts+=" package"
  fi
  if vm_possible; then
    vm_image
    parts+=" vm"
  fi
  if arm_possible; then
    build armhf board_test
    parts+=" arm"
  fi
}

dev_test() {
  dev_setup base clang
  house_checks
  # What is shipped, and what finds most.
  local parts=${CLM_TEST_PRESETS:-release asan-ubsan threads}
  build_all $parts
  [ -n "${CLM_TEST_PRESETS:-}" ] || build_more_parts
  run_tests $parts
}

dev_sanitize() {
  dev_setup base clang
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
