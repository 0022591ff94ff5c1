# 32-bit ARM: cross-built, tested under user-mode emulation.

# Whether ./dev test can have what takes the tools of this processor: it installs nothing for it, but says what is missing.
arm_possible() {
  local missing
  # shellcheck disable=SC2046  # a list of names
  missing=$(missing_packages $(packages_of arm) | xargs)
  if [ -n "$missing" ]; then
    echo "== the 32-bit ARM programs are left out: not installed: $missing (\"$PROGRAM setup arm\" does it)"
    return 1
  fi
}

dev_arm() {
  dev_setup base arm
  build armhf
  begin "tests of armhf"
  # Tests labelled "host" need what user-mode emulation has not, or more time; each says so where it gets the label.
  # One more needs to hear that a program could not be started: under emulation the starting process is not told.
  ctest --preset armhf -j "$JOBS" --no-label-summary --no-tests=error --label-exclude host \
    --exclude-regex '^Clmctl/MissingGnuplot\.' </dev/null
  end
}
