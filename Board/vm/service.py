"""The climate service on the emulated board: its processes, and when it is up."""

import json
import time

SECONDS = 60
# Tags by which the tasks of the service tell that they are up.
ONLINE_TAG = "app.hwapi.online.4b6"
BLACK_BOX_TAG = "app.hwapi.online.4d9"
ONLINE = 6
LOG = "/var/log/clm.log"


class ServiceError(RuntimeError):
    """The service did not come up, or its process did not end."""


def wait_until_up(machine, tag=ONLINE_TAG):
    """Returns once a task, the temperature service if none is named, has told that it is up."""
    deadline = time.monotonic() + SECONDS
    while True:
        status, output = machine.run(f"clmctl tag get {tag} --json 2>&1")
        if status == 0 and json.loads(output)["number"] == ONLINE:
            return
        if time.monotonic() > deadline:
            raise ServiceError(f"the service is not up within {SECONDS} s: {output}{machine.run('cat ' + LOG)[1]}")


def start(machine):
    """Starts the service as the board's /init does, and returns once it is up."""
    machine.run(f"clmctl tag set {ONLINE_TAG} 0")  # one that was killed could not take it back
    machine.run(f"(CLM --board /etc/hwapi/board.toml </dev/null >>{LOG} 2>&1 &)")
    wait_until_up(machine)


def processes(machine, name):
    """Ids of the processes that bear a name; a process that only waits for its parent is none."""
    command = ("for p in /proc/[0-9]*; do read -r n 2>/dev/null <$p/comm && [ \"$n\" = " + name + " ] && "
               "! grep -q '^State:.Z' $p/status && echo ${p#/proc/}; done")
    return machine.run(command)[1].split()


def end(machine, signal):
    """Ends the service by a signal; returns once it and its fan guard are gone."""
    for process in processes(machine, "CLM"):
        machine.run(f"kill -{signal} {process}")
    deadline = time.monotonic() + SECONDS
    for name in ("CLM", "fan-guard"):
        while processes(machine, name):
            if time.monotonic() > deadline:
                raise ServiceError(f"{name} has not ended within {SECONDS} s")
