#!/usr/bin/env python3
"""installed_test.py FOLDER: the Debian packages in FOLDER on a machine of their own, with systemd: installed, used, and
removed again."""

import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import defence
from container import Container, ContainerError, eventually

PACKAGES = ["hwapi-host", "clm", "clmctl", "boardsim", "hwapi-dev"]
PROGRAMS = {"CLM": 8, "clmctl": 1, "boardsim": 1}
UNIT_PROGRAMS = ["clm-fans-restore"]  # run by the unit; the daemon's page has a word on them
LIBRARIES = ["libQIS.so", "libNUB.so", "libGARDDAL.so", "libhwboard.so"]
BOARDS = Path(__file__).resolve().parents[2] / "Board/boards"
CHIP = "/sys/devices/chip/hwmon/hwmon0"
FOUND_SPEED, FOUND_MODE = "77", "2"
MAX_EXPOSURE = 0.6
DESCRIPTORS = 8192
# More starts than an init system allows in a row unless it is told to.
CRASHES = 12

# What the installed completion of "$0" offers for the line "$1", whose words follow.
COMPLETED = """
. /usr/share/bash-completion/completions/$0
COMP_LINE=$1; shift
COMP_POINT=${#COMP_LINE}; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
_$0 $0
printf '%s\\n' "${COMPREPLY[@]}"
"""

packages_folder = Path()


class Machine(Container):
    """A machine with a fan of the kernel, and what the tests ask of it."""

    def __enter__(self):
        super().__enter__()
        self.shell(f"""
            mkdir -p {CHIP}; cd {CHIP}
            echo chip >name; echo 3000 >fan1_input; echo {FOUND_SPEED} >pwm1; echo {FOUND_MODE} >pwm1_enable
            chmod 644 *; ln -s {CHIP} /sys/class/hwmon/hwmon0; ln -s /sys/devices/chip device""")
        return self

    def install(self):
        debs = []
        for name in PACKAGES:
            found = sorted(packages_folder.glob(f"{name}_*.deb"))
            if len(found) != 1:
                raise ContainerError(f"{packages_folder} has {len(found)} packages {name}; ./dev package makes one")
            debs.append(f"/tmp/{name}.deb")
            self.put(debs[-1], found[0].read_bytes())
        self.do("dpkg", "--install", *debs)

    def describe(self):
        """Makes it a board: with a description, and with the services beside the daemon."""
        description = self.do("cat", "/usr/share/clm/boards/kela.toml")
        description = re.sub(r"sim = .*max_rpm.*", 'hwmon = { chip = "chip", fan = "fan1", pwm = "pwm1" }', description, count=1)
        description = description.replace('send = ["root"]', 'send = ["root", "group:hwapi"]')
        self.do("mkdir", "-p", "/etc/hwapi", "/run/board")
        self.put("/etc/hwapi/board.toml", description.encode())
        self.do("cp", "/etc/hwapi/board.toml", "/run/hwapi/board.toml")
        self.do("ln", "-sfn", "/run/hwapi", "/run/board/run")
        self.do("systemd-run", "--quiet", "--unit=board", "--property=UMask=0007", "boardsim", "simulate", "--state", "/run/board")
        self.do("systemctl", "start", "clm")

    def files(self):
        """Every file but those that the package system, and users, change in any case."""
        everywhere = self.shell("find /etc /usr /var /ffs /rom -xdev 2>/dev/null || true").splitlines()
        kept = re.compile(r"/var/(lib/(dpkg|systemd)|cache|log|tmp)/|/etc/\.?(passwd|group|shadow|gshadow|subuid|subgid|pwd)")
        return {path for path in everywhere if not kept.match(path)}

    def property(self, name):
        return self.do("systemctl", "show", "--value", "--property", name, "clm").strip()

    def attribute(self, name):
        return self.do("cat", f"{CHIP}/{name}").strip()

    def wait_for_start(self, number):
        """Waits for the daemon's start number `number`, counted from 0, to be done."""
        eventually(lambda: self.property("NRestarts") == str(number) and self.property("ActiveState") == "active",
                   f"start {number} of the service")


class Installed(unittest.TestCase):
    """On one machine, which every test leaves as it found it."""

    machine = None

    @classmethod
    def setUpClass(cls):
        try:
            cls.machine = cls.enterClassContext(Machine())
        except ContainerError as error:
            raise unittest.SkipTest(f"no container here: {error}") from error
        cls.machine.install()
        cls.machine.describe()
        cls.machine.wait_for_start(0)

    def setUp(self):
        self.do = self.machine.do

    def set_fan(self):
        self.do("clmctl", "fan", "speed", "201=60")
        self.assertEqual(self.machine.attribute("pwm1_enable"), "1")
        self.assertEqual(self.machine.attribute("pwm1"), "153")

    def expect_fan_as_found(self):
        eventually(lambda: self.machine.attribute("pwm1") == FOUND_SPEED, "the fan's own speed")
        self.assertEqual(self.machine.attribute("pwm1_enable"), FOUND_MODE)

    def test_service_runs_as_a_user_without_any_right(self):
        status = self.do("cat", f"/proc/{self.machine.property('MainPID')}/status")
        self.assertEqual(self.do("ps", "-o", "user=,group=", "-p", self.machine.property("MainPID")).split(), ["clm", "hwapi"])
        for right in ("CapPrm:\t0000000000000000", "CapBnd:\t0000000000000000", "NoNewPrivs:\t1", "Seccomp:\t2"):
            self.assertIn(right, status)

    def test_clients_are_served(self):
        lines = self.do("clmctl", "temp", "watch", "Kel", "--count", "1", "--json").splitlines()
        self.assertEqual(len(lines), 5)
        self.assertIsNotNone(json.loads(lines[0])["temperature_celsius"])

    def test_log_lines_have_priorities(self):
        self.do("clmctl", "reset", "ColdReset", "--category", "99")
        journal = [json.loads(line) for line in self.do("journalctl", "--unit=clm", "--output=json").splitlines()]
        priorities = {line["PRIORITY"] for line in journal if "reset category 99 out of range" in str(line["MESSAGE"])}
        self.assertEqual(priorities, {"3"})
        self.assertFalse([line for line in journal if str(line["MESSAGE"]).startswith("<")])

    def test_black_box_is_written(self):
        self.do("clmctl", "blackbox", "store")
        eventually(lambda: "SERIAL NUMBER: K9014800037" in
                   self.machine.run("cat", "/var/lib/clm/ffs/fs1/config/lifedata/blackbox").stdout, "the board file")

    def test_self_diagnosis_leaves_a_one_shot_configuration(self):
        self.do("clmctl", "reset", "SystemModuleSelfDiagnosticReset", "--category", "SelfDiagnostic")
        self.assertRegex(self.do("cat", "/var/lib/clm/rom/swconfig_oneshot.txt"), r"^0x200ca=\d{8}\n0x200cb=\d+\n")

    def test_fan_is_handed_back_when_the_service_is_stopped(self):
        self.set_fan()
        self.do("systemctl", "stop", "clm")
        self.expect_fan_as_found()
        self.do("systemctl", "start", "clm")

    def test_fan_is_handed_back_when_the_daemon_is_killed_and_it_comes_back(self):
        restarts = int(self.machine.property("NRestarts"))
        self.set_fan()
        self.do("kill", "-KILL", self.machine.property("MainPID"))
        self.expect_fan_as_found()
        self.machine.wait_for_start(restarts + 1)

    def test_service_comes_back_crash_after_crash(self):
        restarts = int(self.machine.property("NRestarts"))
        for crash in range(1, CRASHES + 1):
            self.do("kill", "-KILL", self.machine.property("MainPID"))
            self.machine.wait_for_start(restarts + crash)
        self.test_clients_are_served()

    def test_service_is_started_again_within_a_second_and_never_given_up(self):
        self.assertEqual(self.machine.property("RestartUSec"), "1s")
        self.assertEqual(self.machine.property("StartLimitIntervalUSec"), "0")

    def test_service_has_descriptors_for_all_its_clients(self):
        limits = self.do("cat", f"/proc/{self.machine.property('MainPID')}/limits")
        self.assertRegex(limits, rf"Max open files +{DESCRIPTORS} +{DESCRIPTORS} ")

    def test_watchdog_is_on(self):
        self.assertEqual(self.machine.property("WatchdogUSec"), "30s")
        self.assertEqual(self.machine.property("Type"), "notify")

    def test_daemon_that_stands_still_is_ended_by_the_watchdog(self):
        self.do("mkdir", "-p", "/run/systemd/system/clm.service.d")
        self.machine.put("/run/systemd/system/clm.service.d/soon.conf", b"[Service]\nWatchdogSec=1s\n")
        self.do("systemctl", "daemon-reload")
        self.do("systemctl", "restart", "clm")
        restarts = int(self.machine.property("NRestarts"))
        self.set_fan()
        self.do("kill", "-STOP", self.machine.property("MainPID"))
        self.machine.wait_for_start(restarts + 1)
        self.expect_fan_as_found()
        self.assertIn("watchdog", self.do("journalctl", "--unit=clm").lower())
        self.do("rm", "-r", "/run/systemd/system/clm.service.d")
        self.do("systemctl", "daemon-reload")

    def test_exposure_is_low(self):
        text = self.do("systemd-analyze", "security", "--offline=true", "--no-pager", "/usr/lib/systemd/system/clm.service")
        self.assertLessEqual(float(re.search(r"exposure level for clm.service: ([\d.]+)", text).group(1)), MAX_EXPOSURE)

    def test_every_command_and_option_is_in_its_manual_page(self):
        for program, section in PROGRAMS.items():
            page = self.do("sh", "-c", f"man {section} {program} | col -b")
            for word in words_of_help(self.machine, program):
                self.assertIn(word, page, program)
        board = self.do("sh", "-c", "man 5 hwapi-board | col -b")
        for text in ("hwapi-board - board description", "[[temperature]]", "reset_loop_count", "max_rpm = 6000"):
            self.assertIn(text, board)

    def test_command_lines_are_completed_in_a_plain_bash(self):
        for line, offer in (("clmctl temp watch KelO", "KelOcxo"), ("clmctl tag get app", "app.hwapi.online.4b6"),
                            ("boardsim unpl", "unplug")):
            words = line.split()
            offered = self.do("bash", "--norc", "--noprofile", "-c", COMPLETED, words[0], line, *words)
            self.assertIn(offer, offered.splitlines())

    def test_development_package_is_enough_for_a_client(self):
        self.machine.put("/tmp/client.cpp", b'#include "AaSysCom.h"\n#include <cstdio>\n'
                                            b'int main() { std::printf("%x\\n", unsigned{AaSysComGetOwnNid()}); }\n')
        self.machine.shell("g++ -std=c++20 /tmp/client.cpp -o /tmp/client $(pkg-config --cflags --libs hwapi)")
        self.assertEqual(self.do("/tmp/client"), "101\n")

    def test_every_header_of_the_development_package_stands_alone(self):
        headers = self.machine.shell("cd /usr/include/hwapi && find . -name '*.h'").splitlines()
        self.assertGreater(len(headers), 20)
        self.machine.put("/tmp/all.cpp", "".join(f'#include "{header}"\n' for header in sorted(headers)).encode())
        self.machine.shell("g++ -std=c++20 -fsyntax-only /tmp/all.cpp $(pkg-config --cflags hwapi)")


def words_of_help(machine, program, *command):
    """The subcommands and long options that a program's help names, its subcommands' helps included."""
    text = machine.run(program, *command, "--help").stdout
    words = set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text.split("\n\n", 1)[-1]))
    subcommands = re.search(r"\nSubcommands:\n((?:  .*\n)+)", text)
    for name in re.findall(r"^  (\S+)", subcommands.group(1) if subcommands else "", re.MULTILINE):
        words |= {name} | words_of_help(machine, program, *command, name)
    return words


class WithoutNeighbours(unittest.TestCase):
    """A machine on which nothing but the service is installed: nobody plays the board's reset service."""

    def setUp(self):
        try:
            self.machine = self.enterContext(Machine())
        except ContainerError as error:
            self.skipTest(f"no container here: {error}")

    def test_installation_does_not_wait_for_a_service_that_waits(self):
        self.machine.do("mkdir", "-p", "/etc/hwapi")
        self.machine.put("/etc/hwapi/board.toml", (BOARDS / "linux-box.toml").read_bytes())
        for _ in ("first", "again"):
            self.machine.install()
            eventually(lambda: self.machine.property("ActiveState") == "activating", "a start that waits")
        self.assertEqual(self.machine.do("systemctl", "is-enabled", "clm").strip(), "enabled")
        self.machine.do("dpkg", "--remove", *reversed(PACKAGES))

    def test_service_starts_with_a_description_that_is_detected_for_it(self):
        self.machine.install()
        description = self.machine.do("boardsim", "detect", "--service-alone")
        self.machine.put("/etc/hwapi/board.toml", description.encode())
        self.machine.do("systemctl", "start", "clm")
        self.machine.wait_for_start(0)
        self.assertEqual(len(self.machine.do("clmctl", "temp", "watch", "Kel", "--count", "1", "--json").splitlines()), 5)


class Packaged(unittest.TestCase):
    def test_programs_and_libraries_are_built_for_defence(self):
        root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        for package in packages_folder.glob("*.deb"):
            subprocess.run(["dpkg-deb", "--extract", package, root], check=True)
        files = [path for path in root.rglob("*") if path.is_file() and path.read_bytes().startswith(b"\x7fELF")]
        self.assertEqual({path.name for path in files}, {*PROGRAMS, *UNIT_PROGRAMS, *LIBRARIES})
        for path in files:
            self.assertEqual(defence.missing(path, optimized=True), [], path.name)


class Removed(unittest.TestCase):
    def test_nothing_is_left_after_a_purge(self):
        try:
            machine = self.enterContext(Machine())
        except ContainerError as error:
            self.skipTest(f"no container here: {error}")
        before = machine.files()
        machine.install()
        machine.describe()
        machine.wait_for_start(0)
        machine.do("dpkg", "--remove", *reversed(PACKAGES))
        self.assertEqual(machine.run("pgrep", "CLM").stdout, "")
        left = sorted(machine.files() - before)
        self.assertTrue(all(path.startswith(("/var/lib/clm", "/etc/hwapi", "/ffs", "/rom")) for path in left), left)
        machine.do("rm", "/etc/hwapi/board.toml")  # written by hand, and so removed
        machine.do("dpkg", "--purge", *PACKAGES)
        self.assertEqual(sorted(machine.files() - before), [])


if __name__ == "__main__":
    packages_folder = Path(sys.argv.pop(1))
    unittest.main(verbosity=2)
