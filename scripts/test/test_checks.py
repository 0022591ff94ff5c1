"""The checks find what they are for: each runs over a small tree made for it."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parent.parent


class Tree(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        subprocess.run(["git", "init", "-q", str(self.root)], check=True)

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def check(self, name):
        """Exit status and findings of scripts/check-NAME over the tree."""
        result = subprocess.run([sys.executable, str(SCRIPTS / f"check-{name}"), str(self.root)], capture_output=True,
                                text=True)
        return result.returncode, result.stderr

    def assert_good(self, name):
        self.assertEqual(self.check(name), (0, ""))

    def assert_found(self, name, *texts):
        status, findings = self.check(name)
        self.assertEqual(status, 1)
        for text in texts:
            self.assertIn(text, findings)


class Dependencies(Tree):
    def setUp(self):
        super().setUp()
        self.write("Platform/include/AaFile.h", "#include <cstdint>\n")
        self.write("Platform/host/qis/Socket.h", "#include <sys/socket.h>\n")
        self.write("Platform/host/board/BoardDescription.h", "#include <AaFile.h>\n")

    def test_the_service_may_use_the_contract_its_own_folder_and_the_language(self):
        self.write("ClimateS/src/Fan.h", "#pragma once\n")
        self.write("ClimateS/src/Fan.cpp", '#include "Fan.h"\n#include "AaFile.h"\n#include <vector>\n')
        self.assert_good("dependencies")

    def test_a_host_header_in_the_service_is_found(self):
        self.write("ClimateS/src/Fan.cpp", '#include <vector>\n#include "Socket.h"\n')
        self.assert_found("dependencies", "ClimateS/src/Fan.cpp:2: Socket.h is Platform/host/qis/Socket.h")

    def test_a_host_header_by_a_way_around_is_found(self):
        self.write("ClimateS/src/Fan.cpp", '#include "../../Platform/host/qis/Socket.h"\n')
        self.assert_found("dependencies", "ClimateS/src/Fan.cpp:1:")

    def test_a_system_header_in_the_service_is_found(self):
        self.write("ClimateS/src/Fan.cpp", "#  include <sys/epoll.h>\n")
        self.assert_found("dependencies", "ClimateS/src/Fan.cpp:1: <sys/epoll.h> is not for ClimateS/src")

    def test_the_contract_includes_nothing_but_itself(self):
        self.write("Platform/include/AaSem.h", '#include "AaFile.h"\n#include <string>\n')
        self.assert_found("dependencies", "Platform/include/AaSem.h:2: <string>", "1 to correct")

    def test_the_description_is_for_the_simulator_and_not_for_the_client(self):
        self.write("Board/boardsim/main.cpp", '#include "BoardDescription.h"\n')
        self.assert_good("dependencies")
        self.write("Tools/clmctl/main.cpp", '#include "BoardDescription.h"\n')
        self.assert_found("dependencies", "Tools/clmctl/main.cpp:1: BoardDescription.h", "1 to correct")

    def test_a_header_that_nobody_has_is_found(self):
        self.write("Tools/clmctl/main.cpp", '#include "Gone.h"\n')
        self.assert_found("dependencies", '"Gone.h" is no header of this tree')

    def test_a_folder_without_a_rule_is_found(self):
        self.write("Elsewhere/main.cpp", "\n")
        self.assert_found("dependencies", "Elsewhere/main.cpp:1: no rule")


class Paths(Tree):
    def test_paths_that_exist_are_good(self):
        self.write("Board/boards/dev.toml", "")
        self.write("Board/README.md", "`boards/dev.toml`, `Board/{boards,boards}`, [boards](boards/), `boards/*.toml`\n")
        self.assert_good("paths")

    def test_a_file_by_its_name_alone_may_be_anywhere(self):
        self.write("Board/src/Fan.h", "")
        self.write("Board/README.md", "`Fan.h`, `*.h`\n`Gone.h`\n")
        self.assert_found("paths", "Board/README.md:2: names Gone.h", "1 to correct")

    def test_a_path_that_is_gone_is_found(self):
        self.write("README.md", "| `scripts` | ok |\n| `threads/pool` | gone |\n")
        self.assert_found("paths", "README.md:2: names threads/pool")

    def test_one_of_several_that_is_gone_is_found(self):
        self.write("Platform/host/README.md", "`Platform/{host,fake}`\n")
        self.assert_found("paths", "README.md:1: names Platform/fake")

    def test_pages_are_read_as_well(self):
        self.write("doc/page.md", "`scripts/gone`\n")
        self.assert_found("paths", "doc/page.md:1: names scripts/gone", "1 to correct")

    def test_what_is_no_path_of_the_tree_is_left_alone(self):
        self.write("README.md", "`/ffs/run`, `BOARD/CPU/TASK`, `clmctl temp watch`, `build/debug`, `--state DIR`, `com/`\n")
        self.assert_good("paths")


class Layouts(Tree):
    def setUp(self):
        super().setUp()
        self.write("Platform/include/GloTypes.h", "#include <cstdint>\nusing u8 = std::uint8_t;\nusing u32 = std::uint32_t;\n")
        self.write_ids("API_FAN_MSG")
        self.write_record("  u8 fan;\n  u32 speed;  ///< per cent\n")

    def write_ids(self, *names):
        self.write("HwapiCommon/include/messages/MessageIds.h", '#include "GloTypes.h"\n' + "".join(
            f"inline constexpr u32 {name} = {index + 0x2C15};\n" for index, name in enumerate(names)))

    def write_record(self, members):
        self.write("HwapiCommon/include/messages/Fan.h", f'#include "GloTypes.h"\n/// API_FAN_MSG.\nstruct SFan {{\n{members}}};\n')

    def generate(self):
        subprocess.run([sys.executable, str(SCRIPTS / "layouts.py"), str(self.root)], check=True, capture_output=True)
        return (self.root / "doc/messages.md").read_text()

    def test_the_page_has_the_numbers_of_the_compiler(self):
        (self.root / "doc").mkdir()
        page = self.generate()
        self.assertIn("| 0x2C15 | `API_FAN_MSG` | from the service | [`SFan`](#sfan) | 8 |", page)
        self.assertIn("| 0 | 1 | `u8` | `fan` |  |\n| 1 | 3 | | | padding |\n| 4 | 4 | `u32` | `speed` | per cent |", page)
        self.assert_good("layouts")

    def test_a_page_that_is_older_than_its_record_is_found(self):
        (self.root / "doc").mkdir()
        self.generate()
        self.write_record("  u32 fan;\n")
        self.assert_found("layouts", "doc/messages.md:18: is stale", "1 to correct")

    def test_a_page_that_is_missing_is_found(self):
        self.assert_found("layouts", "doc/messages.md:1: is stale")

    def test_a_message_without_a_record_is_found(self):
        self.write_ids("API_FAN_MSG", "API_OTHER_MSG")
        (self.root / "doc").mkdir()
        self.generate()
        self.assert_found("layouts", "no record's comment begins with API_OTHER_MSG", "1 to correct")

    def test_a_member_that_cannot_be_read_is_found(self):
        self.write_record("  u32 a, b;\n")
        self.assert_found("layouts", "Fan.h:4: \"u32 a, b;\" is no member")


class Pages(Tree):
    def setUp(self):
        super().setUp()
        self.write("doc/README.md", "[concurrency.md](concurrency.md)\n")
        self.write("doc/concurrency.md", "## What is shared\n| `ring`, `lines` | published |\n## Threads\n`Writer`\n")
        self.write("ClimateS/src/Ring.h", "  Published<std::deque<int>> ring;\n  std::atomic<u32> lines = 0;\n")
        self.write("ClimateS/src/Writer.cpp", 'constexpr const char* kThreadName = "Writer";\n')

    def test_pages_that_name_what_there_is_are_good(self):
        self.assert_good("pages")

    def test_a_page_that_is_not_listed_is_found(self):
        self.write("doc/other.md", "")
        self.assert_found("pages", "doc/README.md:1: does not list other.md", "1 to correct")

    def test_a_test_that_does_not_exist_is_found(self):
        self.write("RingTest.cpp", "TEST_F(RingTest, IsWhole) {}\n")
        self.write("doc/README.md", "[concurrency.md](concurrency.md)\n`RingTest.IsWhole`\n`RingTest.IsGone`\n")
        self.assert_found("pages", "doc/README.md:3: names the test RingTest.IsGone", "1 to correct")

    def test_shared_variables_and_threads_without_a_row_are_found(self):
        self.write("ClimateS/src/More.cpp", 'std::atomic<TAaSem*> lock;\nconstexpr const char* kThreadName = "Other";\n')
        self.assert_found("pages", "does not name lock, which ClimateS/src/More.cpp", "does not name Other", "2 to correct")

    def test_a_row_of_a_variable_that_is_gone_is_found(self):
        self.write("ClimateS/src/Ring.h", "  Published<std::deque<int>> ring;\n")
        self.assert_found("pages", "doc/concurrency.md:2: names lines", "1 to correct")


class Sizes(Tree):
    def test_files_at_their_limits_are_good(self):
        self.write("a.h", "\n" * 200)
        self.write("a.cpp", "\n" * 400)
        self.write("aTest.cpp", "\n" * 500)
        self.assert_good("sizes")

    def test_files_past_their_limits_are_found(self):
        self.write("a.h", "\n" * 201)
        self.write("a.cpp", "\n" * 401)
        self.write("aTest.cpp", "\n" * 501)
        self.assert_found("sizes", "a.h:201:", "a.cpp:401:", "aTest.cpp:501:", "3 to correct")


class Format(Tree):
    def setUp(self):
        super().setUp()
        self.write(".clang-format", (SCRIPTS.parent / ".clang-format").read_text())

    def test_formatted_sources_are_good(self):
        self.write("a.cpp", "int f() { return 1; }\n")
        self.assert_good("format")

    def test_a_source_formatted_otherwise_is_found(self):
        self.write("a.cpp", "int f()\n{\n        return 1; }\n")
        self.assert_found("format", "a.cpp:1:")


if __name__ == "__main__":
    unittest.main()
