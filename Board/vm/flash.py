"""The board's flash as a file of this machine: one eMMC, with a partition for each file system."""

import os
import shutil
import struct
import subprocess
from pathlib import Path

MIB = 1 << 20
SIZE = 64 * MIB  # a power of two: the emulator takes nothing else
# Name, start and size. The board's /init mounts them in this order.
PARTITIONS = [("fs1", 1 * MIB, 24 * MIB), ("fs2", 25 * MIB, 24 * MIB), ("rom", 49 * MIB, 8 * MIB)]

SECTOR = 512
LINUX = 0x83  # type of a partition


def partition_table() -> bytes:
    """The first sector: a PC's partition table, its addresses in sectors only."""
    entries = b"".join(struct.pack("<B3xB3xII", 0, LINUX, start // SECTOR, size // SECTOR)
                       for _, start, size in PARTITIONS)
    return bytes(446) + entries.ljust(64, b"\0") + b"\x55\xaa"


def make(path: Path) -> Path:
    """Makes an erased flash with empty file systems; needs no privileges. Holes take no room on this machine."""
    with path.open("wb") as file:
        file.write(partition_table())
        file.truncate(SIZE)
    mke2fs = shutil.which("mke2fs", path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")
    if mke2fs is None:
        raise FileNotFoundError("there is no mke2fs; the Debian package e2fsprogs has it")
    for name, start, size in PARTITIONS:
        # Nothing is left to be initialised while the board runs.
        options = f"offset={start},lazy_itable_init=0,lazy_journal_init=0"
        subprocess.run([mke2fs, "-q", "-F", "-t", "ext4", "-L", name, "-E", options, str(path), f"{size // 1024}k"],
                       check=True)
    return path
