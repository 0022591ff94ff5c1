# 32-bit ARM: cross-built, tested under user-mode emulation.

dev_arm() {
  dev_setup base arm
  build armhf
  begin "tests of armhf"
  # Tests labelled "host" need what user-mode emulation has not; each says so where it gets the label.
  ctest --preset armhf -j "$JOBS" --no-label-summary --no-tests=error --label-exclude host </dev/null
  end
}
