"""A machine of its own for a test: this one's files under an overlay, with its own processes, mounts and init system."""

import os
import subprocess
import time
from pathlib import Path

BOOT = Path(__file__).with_name("boot")
PATIENCE_SECONDS = 60


class ContainerError(RuntimeError):
    """The container cannot be had here, or did not do what was asked."""


def eventually(is_true, what):
    """Waits until `is_true` gives something that counts, and returns it."""
    deadline = time.monotonic() + PATIENCE_SECONDS
    while not (result := is_true()):
        if time.monotonic() > deadline:
            raise ContainerError(f"{what} did not come within {PATIENCE_SECONDS} s")
        time.sleep(0.05)
    return result


class Container:
    """To be used in a with statement: at its end all of it is gone, files included."""

    def __enter__(self):
        if os.geteuid() != 0:
            raise ContainerError("only root can start one")
        self._console = open(os.devnull, "rb")
        self._unshare = subprocess.Popen(
            ["unshare", "--fork", "--pid", "--mount", "--uts", "--ipc", "--net", "--cgroup", "--kill-child", BOOT],
            stdin=self._console, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            self._init = eventually(self._find_init, "the container's init")
            eventually(lambda: self.run("systemctl", "is-system-running").stdout.strip() in ("running", "degraded"),
                       "the container's system")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._unshare.kill()
        self._unshare.communicate()
        self._console.close()

    def _find_init(self):
        if self._unshare.poll() is not None:
            raise ContainerError("it does not start: " + self._unshare.stdout.read().decode(errors="replace").strip())
        children = Path(f"/proc/{self._unshare.pid}/task/{self._unshare.pid}/children").read_text().split()
        if not children or "systemd" not in Path(f"/proc/{children[0]}/comm").read_text():
            return None
        return children[0]

    def run(self, *command, text=None):
        """Runs a command in the container; returns its CompletedProcess."""
        enter = ["nsenter", "--target", self._init, "--all", "--wdns=/", "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin"]
        return subprocess.run([*enter, *map(str, command)], input=text, capture_output=True, text=True, check=False,
                              timeout=PATIENCE_SECONDS)

    def do(self, *command, text=None):
        """Runs a command that must succeed; returns what it printed."""
        result = self.run(*command, text=text)
        if result.returncode != 0:
            raise ContainerError(f"{' '.join(map(str, command))}: status {result.returncode}\n{result.stdout}{result.stderr}")
        return result.stdout

    def put(self, path, content):
        """Writes a file in the container."""
        enter = ["nsenter", "--target", self._init, "--all", "--wdns=/", "sh", "-c", 'cat >"$0"', path]
        subprocess.run(enter, input=content, check=True, timeout=PATIENCE_SECONDS)

    def shell(self, script):
        """Runs a script of the shell that must succeed; returns what it printed."""
        return self.do("sh", "-ec", script)
