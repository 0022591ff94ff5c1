#!/usr/bin/env python3
"""defence_test.py COMPILER: defence.py finds what a program was built without; each defence is left out once."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import defence

SOURCE = """
#include <cstring>
#include <vector>
int Copy(char* to, const char* from) { std::strcpy(to, from); return to[0]; }
int First(const char* text) { char copy[64]; std::strcpy(copy, text); return Copy(copy, text + 1); }
int At(const std::vector<int>& numbers, unsigned long index) { return numbers[index]; }
int main(int count, char** words) { return First(words[0]) + At(std::vector<int>(9), static_cast<unsigned long>(count)); }
"""
OPTIONS = ["-std=c++20", "-O2", "-fPIE", "-pie", "-fstack-protector-strong", "-D_GLIBCXX_ASSERTIONS", "-U_FORTIFY_SOURCE",
           "-D_FORTIFY_SOURCE=3", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack", "-Wl,-rpath,$ORIGIN/../lib"]
PROTECTIONS = {"x86_64": "-fcf-protection=full", "aarch64": "-mbranch-protection=standard"}

compiler = "c++"


class Defence(unittest.TestCase):
    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.source, self.program = Path(folder) / "program.cpp", Path(folder) / "program"
        self.source.write_text(SOURCE)
        machine = subprocess.run([compiler, "-dumpmachine"], check=True, capture_output=True, text=True).stdout
        self.protection = PROTECTIONS.get(machine.partition("-")[0])

    def missing(self, *more, optimized=True):
        """What a program lacks that is built for defence, but with some more options."""
        protection = [self.protection] if self.protection else []
        subprocess.run([compiler, *OPTIONS, *protection, *more, self.source, "-o", self.program], check=True)
        return defence.missing(self.program, optimized)

    def expect_missing(self, word, *more):
        found = self.missing(*more)
        self.assertEqual(len(found), 1, found)
        self.assertIn(word, found[0])

    def test_program_that_has_all_of_them_lacks_nothing(self):
        self.assertEqual(self.missing(), [])

    def test_program_at_a_fixed_place_is_found(self):
        self.expect_missing("-pie", "-fno-pie", "-no-pie")

    def test_tables_that_stay_writable_are_found(self):
        self.expect_missing("-z relro", "-Wl,-z,norelro")

    def test_late_binding_is_found(self):
        self.expect_missing("-z now", "-Wl,-z,lazy")

    def test_stack_that_may_hold_code_is_found(self):
        self.expect_missing("-z noexecstack", "-Wl,-z,execstack")

    def test_search_in_the_working_directory_is_found(self):
        for path in (":", "$ORIGIN/../lib2:", "lib"):
            self.expect_missing("RUNPATH", f"-Wl,-rpath,{path}")

    def test_search_path_of_the_old_kind_is_found(self):
        self.expect_missing("RUNPATH", "-Wl,--disable-new-dtags", "-Wl,-rpath,:")

    def test_unguarded_stack_frames_are_found(self):
        self.expect_missing("-fstack-protector-strong", "-fno-stack-protector")

    def test_unchecked_containers_are_found(self):
        self.expect_missing("_GLIBCXX_ASSERTIONS", "-U_GLIBCXX_ASSERTIONS")

    def test_unmarked_landings_are_found(self):
        if not self.protection:
            self.skipTest("this processor has no marks")
        self.expect_missing("landings", self.protection.partition("=")[0] + "=none")

    def test_object_without_marks_is_found_where_the_start_files_have_them(self):
        if self.protection != PROTECTIONS["x86_64"]:
            self.skipTest("this processor has no marks, or no start files like these")
        plain = self.source.with_name("plain.o")
        start = 'asm(".pushsection .init,\\"ax\\"; endbr64; ret; .popsection");'
        self.source.write_text(SOURCE + start)
        self.assertEqual(self.missing("-nostartfiles", "-Wl,-e,main"), [])
        plain_source = self.source.with_name("plain.cpp")
        plain_source.write_text("int Plain() { return 1; }")
        subprocess.run([compiler, "-c", "-fPIE", "-fcf-protection=none", plain_source, "-o", plain], check=True)
        self.expect_missing("landings", "-nostartfiles", "-Wl,-e,main", plain)

    def test_unchecked_buffers_are_found_where_an_optimizer_checks_them(self):
        self.expect_missing("_FORTIFY_SOURCE", "-U_FORTIFY_SOURCE")
        self.assertEqual(self.missing("-U_FORTIFY_SOURCE", optimized=False), [])


class Commands(unittest.TestCase):
    MACHINE = "Advanced Micro Devices X86-64"
    OPTIONS = "c++ -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fcf-protection=full "

    def found(self, command, optimized=True):
        return defence.missing_of_commands([{"file": "a.cpp", "command": command}], self.MACHINE, optimized)

    def test_source_with_all_of_them_lacks_nothing(self):
        self.assertEqual(self.found(self.OPTIONS), [])

    def test_sizes_that_are_checked_at_a_lower_level_or_not_at_all_are_found(self):
        for option in ("-D_FORTIFY_SOURCE=2", "-D_FORTIFY_SOURCE", "-U_FORTIFY_SOURCE"):
            self.assertEqual(self.found(self.OPTIONS + option), ["a.cpp: without -D_FORTIFY_SOURCE=3"], option)
        self.assertEqual(self.found("c++ -fcf-protection=full"), ["a.cpp: without -D_FORTIFY_SOURCE=3"])

    def test_sizes_need_an_optimizer(self):
        self.assertEqual(self.found("c++ -fcf-protection=full", optimized=False), [])

    def test_source_without_marks_is_found(self):
        for option in ("-fcf-protection=none", "-fcf-protection=return"):
            self.assertEqual(self.found(self.OPTIONS + option), ["a.cpp: without -fcf-protection=full"], option)

    def test_each_source_is_looked_at(self):
        commands = [{"file": "a.cpp", "command": self.OPTIONS}, {"file": "b.cpp", "arguments": ["c++"]}]
        self.assertEqual(len(defence.missing_of_commands(commands, self.MACHINE, True)), 2)

    def test_processor_without_marks_needs_none(self):
        self.assertEqual(defence.missing_of_commands([{"file": "a.cpp", "command": "c++"}], "ARM", False), [])


class CommandLine(unittest.TestCase):
    def run_defence(self, *arguments):
        return subprocess.run([Path(__file__).with_name("defence.py"), *arguments], capture_output=True, text=True, check=False)

    def test_file_and_what_it_lacks_are_said(self):
        with tempfile.TemporaryDirectory() as folder:
            source, program = Path(folder) / "program.cpp", Path(folder) / "program"
            source.write_text("int main() {}\n")
            subprocess.run([compiler, "-no-pie", source, "-o", program], check=True)
            result = self.run_defence("--optimized", program)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{program}: without a position-independent program", result.stdout)

    def test_command_that_lacks_something_is_a_failure(self):
        with tempfile.TemporaryDirectory() as folder:
            source, program, commands = (Path(folder) / name for name in ("program.cpp", "program", "commands.json"))
            source.write_text("int main() {}\n")
            subprocess.run([compiler, source, "-o", program], check=True)
            commands.write_text(json.dumps([{"file": "a.cpp", "command": "c++ -D_FORTIFY_SOURCE=2"}]))
            result = self.run_defence("--optimized", f"--commands={commands}", program)
        self.assertEqual(result.returncode, 1)
        self.assertIn("a.cpp: without -D_FORTIFY_SOURCE=3", result.stdout)

    def test_nothing_to_look_at_is_a_failure(self):
        self.assertEqual(self.run_defence("--optimized").returncode, 1)


if __name__ == "__main__":
    compiler = sys.argv.pop(1)
    unittest.main(verbosity=2)
