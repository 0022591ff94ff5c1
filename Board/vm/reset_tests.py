"""Tests of resets and power cuts: what the black box on the board's flash tells of them in the board's next life."""

import re
import tempfile
import unittest
from dataclasses import dataclass
from pathlib import Path

import blackbox
import flash
import service
from blackbox import BOARD, RUNNING, STANDBY, TRACE
from machine import Machine

POWER_ON, APPLICATION_HARD = 0, 5  # types of the last reset, as the reset service tells them
SET_EARLY = "2024.01.31-09:35:00"  # a time as the board's date takes it
FELT = 61250  # thousandths of a degree
ANSWERED = 3  # announcements of one sender that are answered before the power goes
MEASURE = "clmctl temp watch Kel --count 1 --timeout 30s"
UNSYNCED = "never synced"

image = None  # folder with what the emulator starts


@dataclass
class Files:
    """What the flash holds of the black box, and how it is mounted, at some time of a life."""

    running: str
    standby: str
    trace: str
    mounts: str

    @classmethod
    def of(cls, machine):
        return cls(blackbox.file_text(machine, RUNNING, BOARD), blackbox.file_text(machine, STANDBY, BOARD),
                   blackbox.file_text(machine, RUNNING, TRACE), machine.output_of("grep mmcblk /proc/mounts"))


def announcing(sender):
    """A command without an end that announces resets and tells of each that was answered."""
    announcement = blackbox.announcement("ColdReset", "User", f"{sender}$n")
    return f"(n=1; while {announcement} >/dev/null; do echo answered {sender}$n; n=$((n + 1)); done)"


class ResetCycle(unittest.TestCase):
    """Three lives of one board, each ended by a power cut. They are lived once; each test looks at something of them.

    No clock of the board runs without power: a life begins in 1970, unless the clock is set before the service starts.
    """

    @classmethod
    def setUpClass(cls):
        folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="flash-"))
        storage = flash.make(Path(folder) / "flash")
        with Machine(image, storage) as machine:
            cls.first_life(machine)
        with Machine(image, storage, f"reset_type={APPLICATION_HARD}") as machine:
            cls.second_life(machine)
        with Machine(image, storage, f"reset_type={POWER_ON} utc={SET_EARLY}") as machine:
            cls.third_life(machine)

    @classmethod
    def first_life(cls, machine):
        """The flash is erased. The clock is set to just before the year from which on it counts as set. Then a
        measurement, and an announced reset; the power goes as soon as that is answered."""
        service.wait_until_up(machine, service.BLACK_BOX_TAG)
        cls.erased, cls.unset_year = Files.of(machine), machine.output_of("date -u +%Y").strip()
        machine.output_of("date -u -s '2009-12-31 23:59:58'")
        blackbox.wait_until(machine, f"grep -qs PowerOn {RUNNING}/{BOARD}")
        cls.once_set = Files.of(machine)
        machine.feel("mcu", FELT)
        machine.output_of(MEASURE)
        machine.output_of(f"echo {UNSYNCED} >{RUNNING}/unsynced")
        blackbox.announce(machine, "Hard", "Recovery", "by hand")
        cls.announced = Files.of(machine)

    @classmethod
    def second_life(cls, machine):
        """The announced reset came. Another three are announced while the standby file system can be written, can
        only be read, and is not mounted. Two senders then announce without an end, and the power goes amid that."""
        service.wait_until_up(machine, service.BLACK_BOX_TAG)
        cls.after_announcement, cls.kernel_log = Files.of(machine), machine.output_of("dmesg")
        cls.unsynced = blackbox.file_text(machine, RUNNING, "unsynced")
        cls.reset_info = machine.output_of("clmctl blackbox reset-info --timeout 30s")
        machine.output_of("date -u -s '2024-01-31 09:30:00'")
        blackbox.wait_until(machine, f"! grep -q requested {RUNNING}/{BOARD}")
        cls.mark_removed = Files.of(machine)
        machine.output_of(MEASURE)
        blackbox.announce(machine, "SystemReset", "User", "writable")
        cls.writable = Files.of(machine)
        machine.output_of(f"mount -o remount,ro {STANDBY}")
        blackbox.announce(machine, "SystemReset", "User", "read-only")
        cls.read_only = Files.of(machine)
        machine.output_of(f"umount {STANDBY}")
        blackbox.announce(machine, "SystemReset", "User", "unmounted")
        cls.unmounted, cls.below_mount_point = Files.of(machine), machine.output_of(f"ls -A {STANDBY}")
        machine.output_of(f"mount {STANDBY}")
        cls.output = machine.run_until(announcing("a") + " & " + announcing("b"), f"answered a{ANSWERED}\n")

    @classmethod
    def third_life(cls, machine):
        """The clock is set before the service starts: what it says of the power cut is recorded at once."""
        service.wait_until_up(machine, service.BLACK_BOX_TAG)
        blackbox.wait_until(machine, f"grep -qs T09:.*PowerOn {RUNNING}/{BOARD}")
        cls.last = Files.of(machine)

    def test_each_file_system_is_a_partition_of_the_flash(self):
        for number, place in enumerate((RUNNING, STANDBY, "/rom"), 1):
            self.assertRegex(self.erased.mounts, rf"(?m)^/dev/mmcblk0p{number} {place} ext4 rw\b")

    def test_nothing_is_recorded_before_the_clock_is_set(self):
        self.assertEqual(self.unset_year, "1970")
        self.assertIsNone(self.erased.running)

    def test_the_reason_is_recorded_once_the_clock_is_set(self):
        (time, reason), = blackbox.history(self.once_set.running)
        self.assertEqual(reason, "PowerOn reset")
        self.assertRegex(time, "^2010-01-01T")

    def test_an_answered_announcement_is_on_both_file_systems_after_the_power_cut(self):
        self.assertEqual(blackbox.reasons(self.announced.running),
                         ["PowerOn reset", "Hardware reset requested : Recovery (by hand)"])
        self.assertEqual(self.announced.standby, self.announced.running)
        self.assertEqual(self.after_announcement.running, self.announced.running)
        self.assertEqual(self.after_announcement.standby, self.announced.running)

    def test_the_end_was_a_power_cut(self):
        for number in (1, 2, 3):
            self.assertIn(f"EXT4-fs (mmcblk0p{number}): recovery complete", self.kernel_log)
        self.assertNotIn(UNSYNCED, self.unsynced or "")

    def test_the_trace_survives_the_power_cut_and_goes_on(self):
        old = blackbox.trace_rows(self.announced.trace)
        self.assertIn(str(FELT), old[-1])
        self.assertEqual(self.after_announcement.trace, self.announced.trace)
        later = blackbox.trace_rows(self.last.trace)
        self.assertEqual(later[:len(old)], old)
        self.assertGreater(len(later), len(old))

    def test_the_announced_reset_that_came_is_told_as_the_last_one(self):
        self.assertRegex(self.reset_info, r"Category +Recovery\nExtended information +by hand\n")

    def test_an_announced_reset_that_came_is_no_longer_only_requested(self):
        old = blackbox.history(self.announced.running)
        expected = [(time, reason.replace(" requested", "")) for time, reason in old]
        self.assertEqual(blackbox.history(self.mark_removed.running), expected)

    def test_a_standby_file_system_that_cannot_be_written_is_left_alone(self):
        self.assertEqual(blackbox.reasons(self.writable.standby)[-1], "System reset : User (writable)")
        self.assertRegex(self.read_only.mounts, rf"{STANDBY} ext4 ro\b")
        self.assertEqual(blackbox.reasons(self.read_only.running)[-1], "System reset : User (read-only)")
        self.assertEqual(self.read_only.standby, self.writable.standby)

    def test_a_standby_file_system_that_is_not_mounted_is_left_alone(self):
        self.assertNotIn(STANDBY, self.unmounted.mounts)
        self.assertEqual(blackbox.reasons(self.unmounted.running)[-1], "System reset : User (unmounted)")
        self.assertEqual(self.below_mount_point, "")

    def test_announcements_answered_before_a_power_cut_amid_others_are_on_both_file_systems(self):
        answered = re.findall(r"answered ([ab]\d+)\n", self.output)
        self.assertGreaterEqual(len(answered), ANSWERED)
        for board_file in (self.last.running, self.last.standby):
            recorded = blackbox.reasons(board_file)
            for info in answered:
                self.assertEqual(recorded.count(f"Cold reset : User ({info})"), 1, recorded)

    def test_power_on_after_a_cold_reset_is_recorded_behind_the_old_entries_as_probably_that(self):
        old, last = blackbox.history(self.unmounted.running), blackbox.history(self.last.running)
        kept = [entry for entry in last if entry in old]
        self.assertGreater(len(kept), 1)
        self.assertEqual(last[:len(kept)], old[-len(kept):])
        time, reason = last[-1]
        self.assertRegex(reason, r"^PowerOn reset \(probably same as previous cold reset\) : User \([ab]\d+\)$")
        self.assertRegex(time, "^2024-01-31T09:")
