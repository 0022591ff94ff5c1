#!/usr/bin/env python3
"""Tests on the emulated board: what a chip is made to feel outside is what the service reports inside, and what the
black box keeps through resets and power cuts (reset_tests.py).

usage: board_test.py IMAGE [unittest's arguments]
"""

import json
import sys
import tempfile
import time
import unittest
from pathlib import Path

import fan_messages
import flash
import reset_tests
import service
from machine import Machine
from reset_tests import ResetCycle  # noqa: F401  one of the tests here

# Sensors of the group "Kel", the chips they are bound to by Board/boards/arm-board.toml, and those chips' channels.
MCU, ENV, INTAKE = ("KEL_MCU", "mcu", None), ("KEL_ENV", "env", None), ("KEL_INTAKE", "intake", None)
KEL, VORNIK = ("KEL", "remote", 0), ("KEL_VORNIK", "remote", 1)
GROUP = {"KEL_MCU", "KEL", "KEL_ENV", "KEL_VORNIK", "KEL_INTAKE"}

# Fans by the service's number; the kernel counts them from 1.
FAN1, FAN2, FAN3 = 201, 202, 203
RPM_PER_CENT = 300  # of the fan chip's model
MANUAL, KEEPS_SPEED, AUTOMATIC = 1, 2, 3  # modes of the fan chip's driver

DRIVER_SECONDS = 30  # seconds; the driver of the tmp423 keeps a value for a while

machine = None  # that the tests of this file share
table = []  # rows of what was set and read


def setUpModule():
    global machine
    start = time.monotonic()
    folder = unittest.enterModuleContext(tempfile.TemporaryDirectory(prefix="flash-"))
    storage = flash.make(Path(folder) / "flash")
    machine = unittest.enterModuleContext(Machine(reset_tests.image, storage))
    service.wait_until_up(machine)
    print(f"board and service started in {time.monotonic() - start:.1f} s", flush=True)


def readings(group="Kel"):
    """One indication as clmctl prints it on the board: object by sensor."""
    status, output = machine.run(f"clmctl temp watch {group} --count 1 --timeout 30s --json 2>/tmp/clmctl.err")
    if status != 0:
        raise AssertionError(f"clmctl ended with {status}: {machine.run('cat /tmp/clmctl.err /var/log/clm.log')[1]}")
    objects = [json.loads(line) for line in output.splitlines() if line.startswith("{")]
    return {reading["sensor"]: reading for reading in objects}


def thousandths(reading):
    celsius = reading["temperature_celsius"]
    return None if celsius is None else round(celsius * 1000)


def note(sensor, was_set, reading):
    reported = thousandths(reading)
    table.append((sensor, f"{was_set / 1000:.3f}" if isinstance(was_set, int) else was_set,
                  reading["driver_error_text"] if reported is None else f"{reported / 1000:.3f}"))


class EmulatedBoard(unittest.TestCase):
    def report(self, sensor, value):
        """Lets a sensor's chip feel a value and returns what the service reports."""
        name, chip, channel = sensor
        machine.feel(chip, value, channel)
        reading = readings()[name]
        note(name, value, reading)
        return thousandths(reading)

    def settle(self, sensor, value, group="Kel"):
        """As report, for a chip whose driver remembers: reports until the value is there, or time is up."""
        name, chip, channel = sensor
        machine.feel(chip, value, channel)
        deadline = time.monotonic() + DRIVER_SECONDS
        while thousandths(reading := readings(group)[name]) != value and time.monotonic() < deadline:
            pass
        note(name, value, reading)
        return thousandths(reading)

    def driver(self, action, device):
        status, output = machine.run(f"echo {device} > /sys/bus/i2c/drivers/lm75/{action}")
        self.assertEqual(status, 0, output)

    def test_the_board_is_a_32_bit_arm(self):
        self.assertEqual(machine.run("uname -m"), (0, "armv7l\n"))

    def test_every_sensor_of_the_group_is_reported(self):
        self.assertEqual(set(readings()), GROUP)

    def test_a_value_the_chip_can_represent_is_reported_to_the_thousandth(self):
        # The chip counts sixteenths of a degree; two of them are a whole number of thousandths.
        for value in (25000, 25125, 99875, 0, 125, -125, -10500, -40000, -55000, 127875, 36625):
            with self.subTest(value=value):
                self.assertEqual(self.report(MCU, value), value)

    def test_an_odd_sixteenth_is_reported_without_its_half_thousandth(self):
        # 25.0625: the kernel's attribute has no tenths of a thousandth and rounds down.
        for value, reported in ((25063, 25062), (-25062, -25063), (80688, 80687)):
            with self.subTest(value=value):
                self.assertEqual(self.report(MCU, value), reported)

    def test_chips_of_one_kind_are_told_apart_by_their_address(self):
        values = {MCU: 21000, ENV: -5250, INTAKE: 63500}
        for (_, chip, _), value in values.items():
            machine.feel(chip, value)
        reported = readings()
        for sensor, value in values.items():
            note(sensor[0], value, reported[sensor[0]])
            self.assertEqual(thousandths(reported[sensor[0]]), value)

    def test_channels_of_one_chip_are_told_apart(self):
        # This model reaches odd sixteenths and negative eighths exactly; the driver rounds to the nearest.
        self.assertEqual(self.settle(KEL, 25063), 25063)
        self.assertEqual(self.settle(VORNIK, -12500), -12500)
        self.assertEqual(self.settle(("KEL_OCXO", "remote", 2), 41188, "KelOcxo"), 41188)

    def test_a_chip_that_went_away_is_one_sensors_error_and_comes_back(self):
        machine.feel("mcu", 30500)
        machine.feel("env", 18250)
        self.driver("unbind", "3-0048")
        self.addCleanup(machine.run, "echo 3-0048 > /sys/bus/i2c/drivers/lm75/bind 2>/dev/null")
        reported = readings()
        note("KEL_MCU", "unbound", reported["KEL_MCU"])
        note("KEL_ENV", 18250, reported["KEL_ENV"])
        self.assertEqual(reported["KEL_MCU"]["state"], "failed")
        self.assertIsNone(reported["KEL_MCU"]["temperature_celsius"])
        self.assertLess(reported["KEL_MCU"]["driver_error"], 0)
        self.assertEqual(thousandths(reported["KEL_ENV"]), 18250)
        self.driver("bind", "3-0048")
        self.assertEqual(self.settle(MCU, 31000), 31000)

    def test_a_chip_that_comes_back_under_another_number_is_found(self):
        self.driver("unbind", "3-0048")
        self.driver("unbind", "3-0049")
        self.driver("bind", "3-0049")  # takes the lower of the two free numbers, which was the other chip's
        self.driver("bind", "3-0048")
        self.assertEqual(self.settle(MCU, 42500), 42500)
        self.assertEqual(self.settle(ENV, -7125), -7125)


class EmulatedFans(unittest.TestCase):
    def setUp(self):
        self.chip = self.run_on_board("grep -l max31785 /sys/class/hwmon/*/name").rsplit("/", 1)[0]

    def run_on_board(self, command):
        status, output = machine.run(command)
        self.assertEqual(status, 0, f"{command}: {output}")
        return output

    def attribute(self, name):
        return int(self.run_on_board(f"cat {self.chip}/{name}"))

    def state(self):
        """Of every fan: its mode, and what holds in that mode."""
        holds = {MANUAL: "pwm{}", KEEPS_SPEED: "fan{}_target", AUTOMATIC: "pwm{}_enable"}
        modes = {fan: self.attribute(f"pwm{fan}_enable") for fan in (1, 2, 3)}
        return [(mode, self.attribute(holds[mode].format(fan))) for fan, mode in modes.items()]

    def send(self, message, payload, expect=1):
        """Sends the fan service a message; returns the payloads of those that come back, by id."""
        output = self.run_on_board(f"clmctl send --to {fan_messages.TASK:#x} --id {message:#x} --hex {payload.hex()} "
                                   f"--expect {expect} --timeout 60s --json")
        answers = map(json.loads, output.splitlines())
        return {int(answer["id"], 16): bytes.fromhex(answer["payload_hex"]) for answer in answers}

    def set_speeds(self, speeds, expect=1):
        answers = self.send(fan_messages.SET_SPEED, fan_messages.speed_request(speeds, 8), expect)
        self.assertEqual(fan_messages.response_status(answers[fan_messages.SET_SPEED + 1]), fan_messages.NO_ERROR)
        return answers

    def restart_after(self, signal):
        """Lets the service change fans that somebody, something and nobody controlled, and ends it."""
        service.end(machine, "TERM")
        for value, name in ((77, "pwm1"), (5000, "fan2_target"), (AUTOMATIC, "pwm3_enable")):
            self.run_on_board(f"echo {value} >{self.chip}/{name}")
        service.start(machine)
        found = self.state()
        self.assertEqual(found, [(MANUAL, 30), (KEEPS_SPEED, 5000), (AUTOMATIC, AUTOMATIC)])
        self.set_speeds({FAN1: 100, FAN2: 40, FAN3: 50})
        self.assertEqual(self.state(), [(MANUAL, 100), (MANUAL, 40), (MANUAL, 50)])
        service.end(machine, signal)
        self.assertEqual(self.state(), found)
        service.start(machine)

    def test_a_speed_is_the_chips_control_value_in_manual_mode(self):
        self.set_speeds({FAN1: 60})
        self.assertEqual(self.attribute("pwm1_enable"), MANUAL)
        self.assertEqual(self.attribute("pwm1"), 60)  # of 100: this driver takes 255ths, and shows per cent
        self.assertEqual(self.attribute("fan1_input"), 60 * RPM_PER_CENT)

    def test_the_speed_that_the_kernel_tells_is_the_one_reported(self):
        answers = self.set_speeds({FAN1: 60, FAN2: 30}, expect=2)
        told = {FAN1: self.attribute("fan1_input"), FAN2: self.attribute("fan2_input")}
        self.assertEqual(fan_messages.rpm_by_fan(answers[fan_messages.SPEED_INDICATION]), told)
        self.assertGreater(told[FAN1], told[FAN2])
        self.assertGreater(told[FAN2], 0)

    def test_a_frequency_is_refused_as_the_chip_has_none(self):
        request = fan_messages.frequency_request(FAN1, fan_messages.FREQUENCY_1K)
        answer = self.send(fan_messages.SET_FREQUENCY, request)[fan_messages.SET_FREQUENCY + 1]
        self.assertEqual(fan_messages.response_status(answer), fan_messages.INVALID_PARAMETER)
        self.run_on_board(f"grep 'Setting pwm freq 1kHz for 0xc9 failed.*no such function' {service.LOG}")

    def test_fans_are_handed_back_when_the_service_is_told_to_end(self):
        self.restart_after("TERM")

    def test_fans_are_handed_back_when_the_service_is_killed(self):
        self.restart_after("KILL")


def print_table():
    print(f"\n{'sensor':<12} {'set outside':>12}  reported inside")
    for sensor, was_set, reported in table:
        print(f"{sensor:<12} {was_set:>12}  {reported}")
    print(flush=True)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    reset_tests.image = Path(sys.argv[1])
    program = unittest.main(argv=[sys.argv[0], *sys.argv[2:]], exit=False, verbosity=2)
    print_table()
    sys.exit(not program.result.wasSuccessful())


if __name__ == "__main__":
    main()
