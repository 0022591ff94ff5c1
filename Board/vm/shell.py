#!/usr/bin/env python3
"""The emulated board's console on this terminal, until "reboot -f" there or ^A x here.

^A c changes to the emulator's monitor and back; there "qom-set /machine/peripheral/mcu temperature 42500" lets a chip
feel 42.5 degrees.

usage: shell.py IMAGE FLASH
  FLASH  file that keeps the board's flash; made when it is not there
"""

import os
import sys
from pathlib import Path

import flash
from machine import arguments

if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    image, storage = map(Path, sys.argv[1:])
    if not storage.exists():
        flash.make(storage)
    # ^C goes to the board. The kernel hands the word "people" to its first process.
    command = arguments(image, storage, ["-serial", "mon:stdio"], "people=yes")
    os.execvp(command[0], command)
