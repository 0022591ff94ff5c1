"""./dev starts what it is asked for, and nothing for words that it does not know: over a copy of it whose commands only
tell that they were started."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

DEV = Path(__file__).resolve().parent.parent.parent / "dev"
# Words that a command takes.
TAKEN = {"setup": ["base arm"], "run": ["--for 30s", "--for 2min"], "fuzz": ["--seconds 60"], "vm": ["--shell"],
         "bench": ["--benchmark_filter=Fan"], "soak": ["flood", "flood ends --seconds 5", "hang", "--seconds 30"]}
# Words that look like those.
NOT_TAKEN = ["run --for", "run --for 30", "run --for 30s more", "fuzz --seconds soon", "fuzz 60", "vm --shell more",
             "setup Base!", "soak floods", "soak flood --seconds", "soak --seconds 5 flood"]


class Dev(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.dev = Path(folder.name) / "dev"
        shutil.copy(DEV, self.dev)
        usage = subprocess.run([DEV, "help"], capture_output=True, text=True, check=True).stdout
        self.commands = set(re.findall(r"^  ([a-z]+) ", usage, re.MULTILINE)) - {"help"}
        commands = self.dev.parent / "scripts/dev/commands.sh"
        commands.parent.mkdir(parents=True)
        commands.write_text("".join(f'dev_{name}() {{ echo "started {name}:$*"; }}\n' for name in self.commands))

    def run_dev(self, line):
        return subprocess.run([self.dev, *line.split()], capture_output=True, text=True, check=False)

    def expect_refused(self, line):
        result = self.run_dev(line)
        self.assertEqual((result.returncode, result.stdout), (2, ""), line)
        self.assertIn(f'./dev {line.split()[0]}" takes ', result.stderr)

    def test_every_command_starts(self):
        self.assertGreater(len(self.commands), 10)
        for name in self.commands:
            self.assertEqual(self.run_dev(name).stdout, f"started {name}:\n")

    def test_words_that_a_command_takes_reach_it(self):
        for name, all_words in TAKEN.items():
            for words in all_words:
                self.assertEqual(self.run_dev(f"{name} {words}").stdout, f"started {name}:{words}\n")

    def test_help_after_any_command_is_the_usage(self):
        for name in self.commands:
            for word in ("help", "-h", "--help"):
                result = self.run_dev(f"{name} {word}")
                self.assertEqual((result.returncode, result.stdout.partition("\n")[0]), (0, "usage: ./dev COMMAND"), name)

    def test_other_words_start_nothing(self):
        for name in self.commands - TAKEN.keys():
            self.expect_refused(f"{name} quickly")
        for line in NOT_TAKEN:
            self.expect_refused(line)

    def test_unknown_command_is_refused(self):
        result = self.run_dev("tset")
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertIn('unknown command "tset"', result.stderr)


if __name__ == "__main__":
    unittest.main()
