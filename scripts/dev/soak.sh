# Attacks on the daemon, each with a figure and its limit.

dev_soak() {
  dev_setup base
  build release clm_soak
  build/release/soak/clm_soak "$@"
}
