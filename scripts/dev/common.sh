# What the subcommands share: steps with their times, presets.

JOBS=${CLM_JOBS:-$(nproc)}

# Ends with status 1 and a message on standard error.
fail() {
  echo "$PROGRAM: $*" >&2
  exit 1
}

# begin NAME ... end: announces a step, then says how long it took.
begin() {
  step=$*
  step_start=$SECONDS
  echo "== $step"
}
end() {
  echo "== $step: $((SECONDS - step_start)) s"
}

# Programs with the thread sanitizer need memory laid out where gcc 12 expects it, which wide randomisation may prevent;
# the build runs such programs too, to list their tests.
steady=()
setarch -R true 2>/dev/null && steady=(setarch -R)

# build PRESET [TARGET...]: configures (quietly, unless it fails) and builds.
build() {
  local preset=$1
  shift
  begin "build $preset"
  local log=build/$preset.configure.log folder
  mkdir -p "build/$preset" 2>/dev/null || true
  for folder in build "build/$preset"; do
    [ -w "$folder" ] || fail "cannot write to $PWD/$folder; run as its owner, or in a copy of this tree that is yours"
  done
  cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; fail "configuring the preset \"$preset\" failed"; }
  "${steady[@]}" cmake --build --preset "$preset" -j "$JOBS" ${@:+--target "$@"}
  end
}

# The tracked and the new C++ sources, zero-terminated.
sources() {
  git -c safe.directory='*' ls-files -z --cached --others --exclude-standard --deduplicate '*.h' '*.cpp'
}
