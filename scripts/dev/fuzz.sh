# The open-ended search for messages that the service handles badly.

FUZZER=build/fuzz/fuzz/message_libfuzzer
FUZZ_CORPUS=build/fuzz/corpus
FUZZ_CRASHES=build/fuzz/crashes

# Says where the inputs are that made the service fail, and how to run one again; fails when there are any.
report_crashes() {
  local crashes
  crashes=$(find $FUZZ_CRASHES -type f -newer "$1" | sort)
  echo "== $(find $FUZZ_CORPUS -type f | wc -l) inputs in $FUZZ_CORPUS: the next search goes on from there"
  if [ -z "$crashes" ]; then
    echo "== no input made the service fail"
    return
  fi
  echo "== inputs that made the service fail; to run one again:" >&2
  for crash in $crashes; do
    echo "   $FUZZER $crash" >&2
  done
  exit 1
}

dev_fuzz() {
  local seconds=${2:-0} # after --seconds; 0: no end
  dev_setup base fuzz
  build fuzz
  mkdir -p $FUZZ_CORPUS $FUZZ_CRASHES
  # The first search begins with inputs that reach every handler; a search from nothing is long in finding them.
  [ -n "$(ls -A $FUZZ_CORPUS)" ] || build/fuzz/fuzz/message_fuzz 1000 1 $FUZZ_CORPUS >/dev/null
  local started=build/fuzz/started status=0
  touch $started

  # ^C is the search's to answer: it says how far it came.
  trap : INT
  begin "search for messages that the service handles badly$([ "$seconds" -ne 0 ] || echo ", until ^C")"
  $FUZZER -max_total_time="$seconds" -max_len=1024 -timeout=60 -artifact_prefix=$FUZZ_CRASHES/ -print_final_stats=1 \
    $FUZZ_CORPUS || status=$?
  trap - INT
  end
  report_crashes $started
  # 72: stopped by ^C.
  [ $status -eq 72 ] || return $status
}
