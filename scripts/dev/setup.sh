# Packages: what is named in scripts/packages.txt, by group.

# Prints the packages of the given groups, one a line.
packages_of() {
  local group
  for group in "$@"; do
    awk -v group="[$group]" '
      { sub(/#.*/, ""); gsub(/[ \t]/, "") }
      /^\[/ { inside = ($0 == group); found = found || inside; next }
      inside && $0 != ""
      END { exit !found }' scripts/packages.txt ||
      fail "scripts/packages.txt has no group \"$group\"; its groups: $(grep -o '^\[[a-z-]*' scripts/packages.txt | tr -d '[' | xargs)"
  done
}

# Prints those of the given packages that are not installed.
missing_packages() {
  local installed
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p') || true
  comm -23 <(printf '%s\n' "$@" | sort -u) <(sort -u <<<"$installed")
}

# Installs what is missing of the given groups (default: base), or says what to install.
dev_setup() {
  local packages missing
  packages=$(packages_of "${@:-base}")
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    fail "this machine is not a Debian; install what these Debian packages hold, then call cmake and ctest" \
      "with the presets of CMakePresets.json:" $packages
  fi
  missing=$(missing_packages $packages | xargs)
  [ -z "$missing" ] && return
  if [ "$(id -u)" -ne 0 ]; then
    fail "packages are missing and only root can install them; run" \
      $'\n'"  sudo apt-get install --no-install-recommends $missing"
  fi
  begin "installing $missing"
  export DEBIAN_FRONTEND=noninteractive
  # A source that cannot be reached just now is no obstacle as long as the packages come.
  apt-get update -qq </dev/null || true
  apt-get install -y -qq --no-install-recommends $missing </dev/null >/dev/null
  end
}

# optional WHAT GROUP: whether ./dev test can have a part of it; root installs what is missing for it, others are told.
optional() {
  local missing
  [ "$(id -u)" -ne 0 ] || dev_setup "$2"
  # shellcheck disable=SC2046  # a list of names
  missing=$(missing_packages $(packages_of "$2") | xargs)
  [ -z "$missing" ] && return
  echo "== without $1: not installed: $missing (\"$PROGRAM setup $2\" does it)"
  return 1
}
