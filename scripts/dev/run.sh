# A simulated board on this machine, with the service, to look at.

BOARDSIM=build/release/bin/boardsim
CLMCTL=build/release/bin/clmctl
BOARD_STATE=$PWD/build/run

board_down() {
  "$BOARDSIM" down --state "$BOARD_STATE" || true
}

dev_run() {
  local duration=${2:-} # after --for
  duration=${duration/min/m}
  dev_setup base
  build release CLM boardsim clmctl

  # The board comes down however this ends; ^C is the watching client's to answer.
  trap board_down EXIT
  trap : INT
  "$BOARDSIM" up Board/boards/dev.toml --state "$BOARD_STATE" --fresh
  export HWAPI_RUN=$BOARD_STATE/run
  echo "to use the board from another terminal as well:"
  echo "export PATH=$PWD/${BOARDSIM%/*}:$PWD/${CLMCTL%/*}:\$PATH"
  echo ". $PWD/Tools/completion/hwapi.bash  # completes their command lines in bash"
  local status=0
  ${duration:+timeout --foreground --signal=INT --kill-after=10s "$duration"} "$CLMCTL" temp watch Kel --fans || status=$?
  # 124: the time that was asked for is over.
  [ "$status" -eq 124 ] || return "$status"
}
