"""The emulated board from outside: its serial console, and the temperatures its chips are made to feel."""

import json
import os
import select
import socket
import subprocess
import tempfile
import time
from pathlib import Path

# What is soldered to the board's third I2C bus: id, model and bus address. The board's /init tells the kernel of them.
CHIPS = [("mcu", "tmp105", 0x48), ("env", "tmp105", 0x49), ("intake", "tmp105", 0x4A), ("remote", "tmp423", 0x4C),
         ("fans", "max31785", 0x52)]

EMMC = 2  # the emulator's number of the slot; the two before it are for cards

PROMPT = "board# "  # PS1 of the board's shell, see init
BOOT_SECONDS = 120
COMMAND_SECONDS = 60

# The emulated serial line sometimes stops in the middle of what the board writes, until the board gets a character.
# This one, XON, is taken off by the board's terminal driver: no program there sees it.
NUDGE = "\x11"
NUDGE_SECONDS = 2


class BoardError(RuntimeError):
    """The emulated board did not do what was asked in time, or ended."""


def arguments(image, flash, control, kernel_words=""):
    """The emulator's command line. `image` is the folder that image.py filled, `flash` the file that flash.py made,
    `control` where its serial line and its control socket go."""
    chips = [f"{model},bus=aspeed.i2c.bus.3,address={address:#x},id={name}" for name, model, address in CHIPS]
    return [
        "qemu-system-arm", "-M", "ast2600-evb", "-nodefaults", "-nographic", "-no-reboot", "-monitor", "none",
        "-kernel", str(image / "vmlinuz"), "-dtb", str(image / "board.dtb"), "-initrd", str(image / "initramfs.gz"),
        "-append", "console=ttyS4,115200n8 rdinit=/init quiet panic=-1 " + kernel_words,
        # What the board writes is in the file at once; what its kernel has not yet written goes with the emulator.
        "-drive", f"if=sd,index={EMMC},format=raw,file=" + str(flash).replace(",", ",,"),
        *control,
        *(word for chip in chips for word in ("-device", chip)),
    ]


class Console:
    """The serial line: what the board writes is gathered until an expected text comes."""

    def __init__(self, process):
        self._process = process
        self._seen = ""

    def write(self, text):
        self._process.stdin.write(text.encode())
        self._process.stdin.flush()

    def expect(self, text, seconds):
        """Returns what came before `text`; both are taken off. Fails when it does not come within `seconds`."""
        deadline = time.monotonic() + seconds
        while text not in self._seen:
            left = deadline - time.monotonic()
            if left <= 0:
                raise BoardError(f"no {text!r} on the console within {seconds} s; it said:\n{self._seen}")
            if not select.select([self._process.stdout], [], [], min(left, NUDGE_SECONDS))[0]:
                self.write(NUDGE)
                continue
            data = os.read(self._process.stdout.fileno(), 65536)
            if not data:
                raise BoardError(f"the emulator ended; the console said:\n{self._seen}")
            self._seen += data.decode(errors="replace").replace("\r", "")
        before, self._seen = self._seen.split(text, 1)
        return before


class Qmp:
    """The emulator's control socket: one JSON object a line, answers in order, events in between."""

    def __init__(self, path, seconds):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(seconds)
        self._socket.connect(str(path))
        self._stream = self._socket.makefile("rw")
        self._stream.readline()  # greeting
        self.execute("qmp_capabilities")

    def execute(self, command, **arguments_):
        self._stream.write(json.dumps({"execute": command, "arguments": arguments_}) + "\n")
        self._stream.flush()
        while True:
            line = self._stream.readline()
            if not line:
                raise BoardError(f"the emulator ended while carrying out {command}")
            answer = json.loads(line)
            if "return" in answer:
                return answer["return"]
            if "error" in answer:
                raise BoardError(f"{command} {arguments_}: {answer['error']['desc']}")

    def close(self):
        self._stream.close()
        self._socket.close()


class Machine:
    """A running board. To be used in a with statement: at its end the emulator is killed, whatever happened, which the
    board's flash finds as a power cut.

    `kernel_words` are of those that /init knows, "reset_type=5" for instance."""

    def __init__(self, image, flash, kernel_words=""):
        self._folder = tempfile.TemporaryDirectory(prefix="board-")
        path = Path(self._folder.name) / "qmp"
        control = ["-serial", "stdio", "-qmp", f"unix:{path},server=on,wait=off"]
        self._process = subprocess.Popen(arguments(Path(image), flash, control, kernel_words),
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self._qmp = None
        try:
            self._console = Console(self._process)
            self.boot_log = self._console.expect(PROMPT, BOOT_SECONDS)
            self._qmp = Qmp(path, COMMAND_SECONDS)
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if self._qmp:
            self._qmp.close()
        self._process.kill()
        self._process.communicate()
        self._folder.cleanup()

    def run(self, command, seconds=COMMAND_SECONDS):
        """Runs a shell command on the board; returns its exit status and what it printed."""
        self._console.write(command + "; echo \"=$?\"\n")
        output = self._console.expect(PROMPT, seconds)
        text, _, status = output.rpartition("=")
        return int(status), text

    def output_of(self, command, seconds=COMMAND_SECONDS):
        """As run, of a command that has to end well: returns what it printed."""
        status, output = self.run(command, seconds)
        if status != 0:
            raise BoardError(f"{command} ended with {status}: {output}")
        return output

    def run_until(self, command, text, seconds=COMMAND_SECONDS):
        """Starts a shell command on the board and returns what it printed up to `text`, as soon as it has printed that.
        The command still runs then: the board can only be ended."""
        self._console.write(command + "\n")
        return self._console.expect(text, seconds) + text

    def feel(self, chip, thousandths, channel=None):
        """Lets a chip feel a temperature, in thousandths of a degree; returns what it then holds."""
        name = "temperature" if channel is None else f"temperature{channel}"
        path = f"/machine/peripheral/{chip}"
        self._qmp.execute("qom-set", path=path, property=name, value=thousandths)
        return self._qmp.execute("qom-get", path=path, property=name)
