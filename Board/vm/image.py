#!/usr/bin/env python3
"""Makes what the emulator starts: kernel, device tree, and a root file system with the service, from unpacked Debian
packages and a cross-built tree.

usage: image.py UNPACKED PROGRAMS IMAGE
  UNPACKED  the unpacked packages, as fetch leaves them
  PROGRAMS  the build folder of the preset armhf
  IMAGE     the folder to fill
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
# Kernel modules the board needs, the flash first, as it takes a while to show up; what these need comes by itself.
MODULES = ["sdhci-of-aspeed", "i2c-aspeed", "i2c-dev", "lm75", "max31785", "tmp421", "crc32c_generic", "ext4"]
PROGRAMS = ["CLM", "clmctl", "boardsim"]
CROSS_LIBRARIES = Path("/usr/arm-linux-gnueabihf/lib")


def one(folder, pattern, kind=Path.is_file):
    found = sorted(filter(kind, folder.glob(pattern)))
    if not found:
        sys.exit(f"image.py: no {pattern} in {folder}; \"./dev vm\" fetches and builds what is needed")
    return found[-1]


def add(root, source, target):
    path = root / target
    path.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(source, path)


def needed_modules(modules, name, order):
    """Appends the files of a module to `order`, those it needs first."""
    file = one(modules, f"**/{name}.ko")
    if file in order:
        return
    for names in re.findall(rb"\0depends=([^\0]*)", file.read_bytes()):
        for needed in filter(None, names.decode().split(",")):
            needed_modules(modules, needed, order)
    order.append(file)


def add_modules(root, modules):
    order = []
    for name in MODULES:
        needed_modules(modules, name, order)
    for file in order:
        add(root, file, f"modules/{file.name}")
    (root / "modules/order").write_text("".join(f"{file.name}\n" for file in order))


def needed_libraries(file):
    listing = subprocess.run(["arm-linux-gnueabihf-readelf", "-d", str(file)], check=True, capture_output=True, text=True)
    return re.findall(r"\(NEEDED\).*\[(.+)\]", listing.stdout)


def add_programs(root, build):
    """The programs and every shared library they need, of this tree or of the C++ runtime, without their symbols."""
    own = {path.name: path for path in build.glob("**/lib*.so*")}
    pending = [(one(build, f"**/{name}"), f"bin/{name}") for name in PROGRAMS]
    pending.append((CROSS_LIBRARIES / "ld-linux-armhf.so.3", "lib/ld-linux-armhf.so.3"))
    placed = set()
    while pending:
        source, target = pending.pop()
        if target in placed:
            continue
        placed.add(target)
        add(root, source, target)
        subprocess.run(["arm-linux-gnueabihf-strip", "--strip-unneeded", str(root / target)], check=True)
        pending += [(own.get(name, CROSS_LIBRARIES / name), f"lib/{name}") for name in needed_libraries(source)]


def pack(root, archive):
    names = "\0".join(sorted(str(path.relative_to(root)) for path in root.rglob("*")))
    cpio = subprocess.run(["cpio", "--quiet", "--null", "-o", "-H", "newc", "-R", "+0:+0"], cwd=root, check=True,
                          input=names.encode(), stdout=subprocess.PIPE).stdout
    with archive.open("wb") as file:
        subprocess.run(["gzip", "-1"], input=cpio, stdout=file, check=True)


def main(unpacked, build, image):
    root = image / "root"
    shutil.rmtree(root, ignore_errors=True)
    add(image, one(unpacked, "boot/vmlinuz-*"), "vmlinuz")
    add(image, one(unpacked, "usr/lib/linux-image-*/aspeed-ast2600-evb.dtb"), "board.dtb")
    add(root, one(unpacked, "bin/busybox"), "bin/busybox")
    add(root, HERE / "init", "init")
    add(root, HERE / "chips", "etc/chips")
    add(root, HERE / "fstab", "etc/fstab")
    add(root, HERE.parent / "boards/arm-board.toml", "etc/hwapi/board.toml")
    add_modules(root, one(unpacked, "lib/modules/*", Path.is_dir))
    add_programs(root, build)
    pack(root, image / "initramfs.gz")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*map(Path, sys.argv[1:]))
