# The Debian packages.

PACKAGES=build/release/packages

# Builds them into $PACKAGES.
make_packages() {
  build release CLM clm-fans-restore clmctl boardsim
  begin "packages"
  rm -rf $PACKAGES
  (cd build/release && cpack -G DEB >../packages.log) || { cat build/packages.log >&2; fail "packaging failed"; }
  end
}

dev_package() {
  dev_setup base package
  make_packages
  ls $PACKAGES/*.deb
}
