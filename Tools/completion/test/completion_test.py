#!/usr/bin/env python3
"""completion_test.py CLMCTL BOARDSIM ROOT [TEST...]: the completion offers what the two programs take, nothing else."""

import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from shell import completed, typed, with_programs

PROGRAMS = {}  # paths by name
ROOT = Path()

# What people make up themselves: options by their names, arguments with their commands.
MADE_UP = {
    "--count", "--client", "--receiver", "--id", "--hex", "--expect", "--last", "--title", "--width", "--height",
    "--as", "--info", "--board", "clmctl tag set VALUE", "boardsim tag VALUE"}
# What else has no words of its own: the option that hands it to bash.
FILES = {"--file": "default", "--png": "default", "--svg": "default", "--daemon": "default", "--state": "dirnames",
         "clmctl techlog collect DIR": "dirnames", "clmctl blackbox store-file SRC": "default",
         "boardsim up FILE": "plusdirs"}
# What is on a running board only.
ON_BOARD = {"--sensors", "clmctl tag get NAME", "clmctl tag set NAME", "clmctl tag watch NAME", "boardsim tag NAME",
            "boardsim temp DEVICE", "boardsim fan ID", "boardsim unplug SLOT"}
# An argument that comes before the one in question.
BEFORE = {"clmctl tag set VALUE": "NAME", "boardsim tag VALUE": "NAME", "boardsim temp VALUE": "0x10000",
          "boardsim fan VALUE": "GAR_FAN1", "boardsim plug VARIANT": "Dax1", "boardsim plug STATE": "Dax1 m"}
# Lines to complete; the command that refuses such a word, and how it names those that it takes.
NAMED_IN_REFUSALS = [
    ("clmctl send --to ", "clmctl send --id 1 --to ?", r"one of (.*)"),
    ("clmctl send --sender ", "clmctl send --id 1 --to fan --sender ?", r"one of (.*)"),
    ("clmctl reset ", "clmctl reset ? --category User", r"one of (.*)"),
    ("clmctl reset ColdReset --category ", "clmctl reset ColdReset --category ?", r"one of (.*)"),
    ("clmctl blackbox show ", "clmctl blackbox show ?", r"give (.*)"),
    ("clmctl fan freq 201=", "clmctl fan freq 201=?", r"give (.*)"),
    ("boardsim plug ", "boardsim plug ? m", r"give (.*), or its number"),
    ("boardsim plug Dax1 ", "boardsim plug Dax1 ?", r"give (.*), or a hw_sw_id"),
    ("boardsim plug Dax1 m ", "boardsim plug Dax1 m ?", r"give (.*), or a number"),
    ("boardsim fan 0 ", "boardsim fan 0 ?", r"give (.*)"),
]
# Commands in which each word offered in the place of "?" must be taken.
TAKEN = [
    "clmctl --timeout ?", "clmctl temp start Kel --interval ?", "clmctl temp stop ?", "clmctl fan watch --period ?",
    "clmctl fan speed ?", "clmctl fan speed 201=?", "clmctl blackbox store-file /F --keep ?",
    "clmctl reset Soft --category User --cpu ?", "boardsim temp 0x10001 ?", "boardsim reset --partition ?",
    "boardsim reset --counter ?", "boardsim clock ?", "boardsim reset-type ?"]
TRACE = ("#MINMAX: Minimum and maximum measured temperatures\n#\tKEL_MCU\tKEL_ENV\t\n"
         "MIN:\t39000\t-\t\nMAX:\t43500\t-\t\n\n"
         "#TEMPANDSPEED: temperatures and fan speeds\n#                  \tKEL_MCU\tKEL_ENV\tGAR_FAN1\t\n")
# What makes a whole of such a command.
REST = {"clmctl --timeout ?": " temp types"}


def words(text):
    """The words of a list such as "a, b or c"; of "rpm=N" and "fail=CODE such as fail=-2" what is before the value."""
    listed = (re.sub(r" such as .*", "", word).strip() for word in re.split(r", or |, | or ", text))
    return [re.sub(r"=.*", "=", word) for word in listed if word]


def help_of(command):
    program, *path = command.split()
    return subprocess.run([PROGRAMS[program], *path, "--help"], text=True, capture_output=True, check=True).stdout


def section(text, name):
    found = re.search(rf"\n{name}:\n((?:  .*\n)+)", text)
    return found.group(1) if found else ""


class Command:
    """A command of a program, and what its help says of it."""

    def __init__(self, command):
        text = help_of(command)
        shared = section(help_of(command.split()[0]), "Options") + section(text, "Options")
        self.name = command
        self.subcommands = re.findall(r"^  (\S+)", section(text, "Subcommands"), re.MULTILINE)
        self.options = set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", shared, re.MULTILINE))
        self.valued = set(re.findall(r"^  (?:-\w,)?(--[a-z-]+) TEXT", shared, re.MULTILINE))
        self.arguments = re.findall(r"^  (\S+)", section(text, "Positionals"), re.MULTILINE)


def commands(name):
    """The command and all below it."""
    command = Command(name)
    yield command
    for subcommand in command.subcommands:
        yield from commands(f"{name} {subcommand}")


class Completion(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.environment = {"HWAPI_RUN": str(self.folder / "board" / "run")}

    def complete(self, lines):
        """The answers to the lines; nothing else may be written."""
        answers, errors = completed(lines, [path.parent for path in PROGRAMS.values()], self.environment)
        self.assertEqual(errors, "")
        return answers

    def offers(self, line):
        return self.complete([line])[0].words

    def run_command(self, line):
        program, *rest = line.split()
        return subprocess.run([PROGRAMS[program], *rest], text=True, capture_output=True, check=False,
                              env=with_programs([], self.environment), stdin=subprocess.DEVNULL)


class Words(Completion):
    """Without a board."""

    @classmethod
    def setUpClass(cls):
        cls.commands = [command for program in PROGRAMS for command in commands(program)]

    def test_every_subcommand_and_option_is_offered_and_no_other(self):
        lines = [f"{command.name} {dash}" for command in self.commands for dash in ("", "--")]
        answers = iter(self.complete(lines))
        for command in self.commands:
            subcommands, options = next(answers), next(answers)
            if command.subcommands:
                self.assertEqual(subcommands.words, command.subcommands, command.name)
            self.assertEqual(set(options.words), command.options, command.name)
            self.assertEqual(len(options.words), len(command.options), command.name)

    def places(self):
        """Each place of a value: its name in the tables above, and the line up to it."""
        for command in self.commands:
            for option in sorted(command.valued):
                yield option, f"{command.name} {option} "
                yield option, f"{command.name} {option}="
            for argument in command.arguments:
                name = f"{command.name} {argument}"
                yield name, f"{command.name} {BEFORE[name]} " if name in BEFORE else f"{command.name} "

    def test_every_value_has_words_or_is_one_of_files_of_a_board_or_made_up(self):
        places = list(self.places())
        for (name, line), answer in zip(places, self.complete([line for _, line in places])):
            if name in FILES:
                self.assertIn(FILES[name], answer.options, line)
            elif name in MADE_UP or name in ON_BOARD:
                self.assertEqual(answer.words, [], line)
            else:
                self.assertNotEqual(answer.words, [], f"{line!r} is new: give it words in hwapi.bash, or a row here")
        gone = (MADE_UP | ON_BOARD | FILES.keys() | BEFORE.keys()) - {name for name, _ in places}
        self.assertEqual(gone, set(), "rows of what the programs have no more")

    def test_words_are_those_that_a_refusal_names(self):
        answers = self.complete([line for line, _, _ in NAMED_IN_REFUSALS])
        for (line, refused, pattern), answer in zip(NAMED_IN_REFUSALS, answers):
            result = self.run_command(refused)
            self.assertEqual(result.returncode, 2, refused)
            named = re.search(pattern, result.stderr.strip())
            self.assertIsNotNone(named, result.stderr)
            offered = [word.removeprefix("201=") for word in answer.words]
            self.assertEqual(sorted(offered), sorted(words(named.group(1))), line)

    def test_sensor_and_reset_types_are_those_of_the_messages(self):
        messages = ROOT / "HwapiCommon/include/messages"
        sensors = re.findall(r"^  ETempSensorType_(\w+)", (messages / "TempMeas.h").read_text(), re.MULTILINE)
        resets = re.findall(r"^  ERPresetType\w+ = (\d+)", (messages / "ResetProofRam.h").read_text(), re.MULTILINE)
        self.assertGreater(len(sensors), 40)
        for command in ("start", "stop", "watch"):
            self.assertEqual(self.offers(f"clmctl temp {command} "), [name for name in sensors if name != "None"])
        for command in ("reset-type", "reset"):
            self.assertEqual([word for word in self.offers(f"boardsim {command} ") if word.isdigit()], resets)

    def test_fans_are_those_of_the_refusal_each_with_its_value(self):
        refusal = self.run_command("clmctl fan freq x=1kHz").stderr
        named = re.search(r"give (\d+) to (\d+) or (GAR_FAN)(\d) to GAR_FAN(\d)", refusal)
        numbers = range(int(named[1]), int(named[2]) + 1)
        names = [f"{named[3]}{number}" for number in range(int(named[4]), int(named[5]) + 1)]
        for command in ("freq", "speed", "watch"):
            answer = self.complete([f"clmctl fan {command} 201=20% "])[0]
            self.assertEqual(answer.words, [f"{fan}=" for fan in [*numbers, *names]])
            self.assertIn("nospace", answer.options)

    def test_only_words_that_begin_as_typed_are_offered(self):
        lines = ["clmctl temp watch Kel", "clmctl --json --timeout 1s temp wa",
                 "clmctl reset ColdReset --category=Re", "clmctl fan speed GAR_FAN1=1", "boardsim plug D", "boardsim clock -1", "boardsim --state=/x reset --cl"]
        self.assertEqual([answer.words for answer in self.complete(lines)], [
            ["Kel", "KelOcxo", "KelOcxoDcm"], ["watch"], ["Recovery", "Reconfiguration"], ["100%"],
            ["Dax1", "Dax2", "Dax3"], ["-1h", "-10min", "-1d"], ["--clock"]])

    def test_columns_of_a_trace_file_are_offered_behind_those_already_named(self):
        trace = self.folder / "trace"
        trace.write_text(TRACE)
        plot = f"clmctl blackbox plot --file {trace} --sensors "
        lines = [plot, f"{plot}KEL_MCU,KEL_E", f"{plot}KEL_MCU,GAR"]
        self.assertEqual([answer.words for answer in self.complete(lines)], [
            ["KEL_MCU", "KEL_ENV", "GAR_FAN1"], ["KEL_MCU,KEL_ENV"], ["KEL_MCU,GAR_FAN1"]])

    def test_only_descriptions_and_folders_are_offered_as_a_board(self):
        for name in ("board.toml", "board.txt"):
            (self.folder / name).touch()
        self.assertEqual(self.offers(f"boardsim up {self.folder}/b"), [f"{self.folder}/board.toml"])

    def test_a_program_that_does_not_exist_offers_nothing(self):
        answers, errors = completed(["clmctl ", "clmctl temp watch ", "boardsim temp "], [], {"PATH": "/usr/bin:/bin"})
        self.assertEqual(errors, "")
        self.assertEqual([answer.words for answer in answers], [[], [], []])


class Terminal(Completion):
    def test_a_line_is_completed_on_a_terminal(self):
        programs = [path.parent for path in PROGRAMS.values()]
        (self.folder / "a board.toml").touch()
        self.assertIn("201=60% ", typed("clmctl --json fan speed 201=6\t", "201=60% ", programs))
        self.assertIn(r"a\ board.toml ", typed(f"boardsim up {self.folder}/a\t", r"a\ board.toml ", programs))


class Board(Completion):
    """With a running board."""

    def up(self, description):
        self.state = self.folder / "board"
        self.addCleanup(self.run_command, f"boardsim down --state {self.state}")
        result = self.run_command(f"boardsim up {description} --no-daemon --state {self.state}")
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_what_the_board_has_is_offered(self):
        self.up(ROOT / "Board/boards/kela.toml")
        sensors = self.offers("boardsim temp ")
        self.assertEqual(self.offers("boardsim unplug "), [])
        self.run_command("boardsim plug Dax2 m")
        lines = ["boardsim temp ", "boardsim unplug ", "boardsim fan ", "boardsim tag ", "clmctl tag get ",
                 "clmctl tag watch ", "clmctl tag set "]
        more, slots, fans, *tags = (answer.words for answer in self.complete(lines))
        self.assertEqual(sensors[:2], ["0x10000", "0x10001"])
        self.assertEqual(set(more) - set(sensors), {f"0x3000{index:x}" for index in range(11)})
        self.assertEqual((slots, fans), (["Dax2"], ["GAR_FAN1", "GAR_FAN2"]))
        self.assertIn("app.hwapi.online.4a7", tags[0])
        self.assertEqual(tags, [tags[0]] * 4)

    def test_the_board_is_the_one_whose_state_folder_is_named(self):
        self.up(ROOT / "Board/boards/kela.toml")
        self.environment = {"XDG_RUNTIME_DIR": str(self.folder)}
        lines = [f"boardsim --state {self.state} fan ", f"boardsim tag --state={self.state} ", "boardsim fan "]
        fans, tags, none = (answer.words for answer in self.complete(lines))
        self.assertEqual((fans, none), (["GAR_FAN1", "GAR_FAN2"], []))
        self.assertIn("app.hwapi.online.4a7", tags)

    def test_what_the_kernel_has_cannot_be_changed_and_is_not_offered(self):
        chip = self.folder / "sys/class/hwmon/hwmon0"
        chip.mkdir(parents=True)
        attributes = {"name": "chip", "temp1_input": 40000, "fan1_input": 3000, "pwm1": 77, "pwm1_enable": 2}
        for name, value in attributes.items():
            (chip / name).write_text(f"{value}\n")
        self.environment["HWAPI_SYSFS"] = str(self.folder / "sys")
        description = self.folder / "board.toml"
        detected = self.run_command("boardsim detect").stdout
        description.write_text(re.sub(r"^# (\[\[fan|id|hwmon)", r"\1", detected, flags=re.MULTILINE))
        self.up(description)
        self.assertRegex(self.run_command("boardsim status").stdout, r"0x10000 +\S+ +kernel(.|\n)*GAR_FAN1.*kernel")
        sensors, fans = (answer.words for answer in self.complete(["boardsim temp ", "boardsim fan "]))
        self.assertNotIn("0x10000", sensors)
        self.assertNotIn("GAR_FAN1", fans)

    def test_every_word_offered_is_taken(self):
        self.up(ROOT / "Board/boards/kela.toml")
        answers = self.complete([line.partition("?")[0] for line in TAKEN])
        for line, answer in zip(TAKEN, answers):
            self.assertNotEqual(answer.words, [], line)
            for word in answer.words:
                if word.endswith("="):
                    # Errors of drivers are below 0, a status of the reset service is not.
                    word += "-1" if word.startswith("fail") and "reset-type" not in line else "1"
                if line.endswith("201=?"):
                    word = word.removeprefix("201=")
                result = self.run_command(line.replace("?", word) + REST.get(line, ""))
                self.assertNotEqual(result.returncode, 2, f"{line} {word}: {result.stderr}")

    def test_answers_about_a_reset_are_those_that_a_refusal_names(self):
        self.up(ROOT / "Board/boards/kela.toml")
        named = re.findall(r"[a-z]+=(?=[A-Z])|silent", self.run_command("boardsim reset-type ?").stderr)
        offered = [word for word in self.offers("boardsim reset-type ") if not word.isdigit()]
        self.assertEqual(sorted(offered), sorted(named))

    def test_a_board_that_hangs_is_not_waited_for(self):
        self.up(ROOT / "Board/boards/kela.toml")
        simulator = int(re.search(r"^simulator +(\d+)", self.run_command("boardsim status").stdout, re.MULTILINE)[1])
        os.kill(simulator, signal.SIGSTOP)
        try:
            self.assertEqual(self.offers("boardsim temp "), [])
        finally:
            os.kill(simulator, signal.SIGCONT)


if __name__ == "__main__":
    clmctl, boardsim, root = map(Path, sys.argv[1:4])
    PROGRAMS.update(clmctl=clmctl.resolve(), boardsim=boardsim.resolve())
    ROOT = root.resolve()
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
