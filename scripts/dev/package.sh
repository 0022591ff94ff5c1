# The Debian packages.

PACKAGES=build/release/packages

# Builds them into $PACKAGES.
make_packages() {
  build release CLM clmctl boardsim
  begin "packages"
  rm -rf $PACKAGES
  (cd build/release && cpack -G DEB >../packages.log) || { cat build/packages.log >&2; fail "packaging failed"; }
  end
}

# Whether ./dev test can have them: root installs what is missing for it, others are told.
packages_possible() {
  local missing
  [ "$(id -u)" -ne 0 ] || dev_setup package
  # shellcheck disable=SC2046  # a list of names
  missing=$(missing_packages $(packages_of package) | xargs)
  if [ -n "$missing" ]; then
    echo "== the packages are left out: not installed: $missing (\"$PROGRAM setup package\" does it)"
    return 1
  fi
}

dev_package() {
  dev_setup base package
  make_packages
  ls $PACKAGES/*.deb
}
