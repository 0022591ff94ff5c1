# The emulated 32-bit ARM board: packages, programs, image, then tests or a console.

VM_IMAGE=build/vm/image
VM_FLASH=build/vm/flash  # of the board that --shell starts, from one time to the next; a test has its own

vm_packages() {
  mkdir -p build/vm
  begin "packages of the emulated board"
  # shellcheck disable=SC2046  # a list of names
  Board/vm/fetch build/vm $(packages_of vm-image) || return
  end
}

vm_image() {
  build armhf CLM clmctl boardsim
  begin "image of the emulated board"
  Board/vm/image.py build/vm/unpacked build/armhf $VM_IMAGE
  end
}

# Whether ./dev test can have the emulated board: it installs nothing for it, but says what is missing.
vm_possible() {
  local missing
  # shellcheck disable=SC2046
  missing=$(missing_packages $(packages_of arm vm) | xargs)
  if [ -n "$missing" ]; then
    echo "== the emulated board is left out: not installed: $missing (\"$PROGRAM setup arm vm\" does it)"
    return 1
  fi
  vm_packages || { echo "== the emulated board is left out"; return 1; }
}

dev_vm() {
  local shell=${1:-}
  dev_setup base arm vm
  vm_packages || exit 1
  vm_image
  [ -z "$shell" ] || exec Board/vm/shell.py $VM_IMAGE $VM_FLASH
  begin "tests on the emulated board"
  Board/vm/board_test.py $VM_IMAGE </dev/null
  end
}
