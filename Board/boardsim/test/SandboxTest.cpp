#include "Sandbox.h"

#include "SimError.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace boardsim {
namespace {

bool Contains(const std::vector<std::string>& command, const std::vector<std::string>& part) {
  return std::search(command.begin(), command.end(), part.begin(), part.end()) != command.end();
}

const StateDirectory kState("/tmp/board");

TEST(Sandbox, ShowsTheBoardsFlashToTheDaemon) {
  const auto command = SandboxCommand(kState, {"CLM"}, -1);
  EXPECT_TRUE(Contains(command, {"--bind", "/tmp/board/ffs", "/ffs"}));
  EXPECT_TRUE(Contains(command, {"--bind", "/tmp/board/rom", "/rom"}));
}

TEST(Sandbox, MountsEachFileSystemOfTheFlash) {
  const auto command = SandboxCommand(kState, {"CLM"}, -1);
  EXPECT_TRUE(Contains(command, {"--bind-try", "/tmp/board/ffs/fs1", "/ffs/fs1"}));
  EXPECT_TRUE(Contains(command, {"--bind-try", "/tmp/board/ffs/fs2", "/ffs/fs2"}));
}

TEST(Sandbox, KeepsTheRunDirectoryAtItsPlace) {
  EXPECT_TRUE(Contains(SandboxCommand(kState, {"CLM"}, -1), {"--bind", "/tmp/board/run", "/tmp/board/run"}));
}

TEST(Sandbox, ShowsTheHostReadOnlyAtItsPlace) {
  const auto command = SandboxCommand(kState, {"CLM"}, -1);
  const auto bound = std::find(command.begin(), command.end(), "--ro-bind");
  ASSERT_GT(command.end() - bound, 2);
  EXPECT_EQ(bound[1], bound[2]);
}

TEST(Sandbox, EndsWithItsParent) { EXPECT_TRUE(Contains(SandboxCommand(kState, {"CLM"}, -1), {"--die-with-parent"})); }

TEST(Sandbox, RunsTheCommandLast) {
  EXPECT_TRUE(
      Contains(SandboxCommand(kState, {"CLM", "-V"}, 7), {"--info-fd", "7", "--chdir", "/", "--", "CLM", "-V"}));
}

TEST(Sandbox, FindsTheInnerProcessInItsInfo) {
  EXPECT_EQ(InnerPid("{\n    \"child-pid\": 1234,\n    \"mnt-namespace\": 5\n}\n"), 1234);
  EXPECT_EQ(InnerPid("{ \"child-pid\":7 }"), 7);
}

TEST(Sandbox, FindsNoProcessInOtherText) {
  for (const char* text : {"", "{}", "\"child-pid\":", "\"child-pid\": x"}) EXPECT_EQ(InnerPid(text), 0) << text;
}

TEST(Sandbox, RefusesADaemonThatIsNoProgram) { EXPECT_THROW(FindDaemon("/etc/passwd"), SimError); }

}  // namespace
}  // namespace boardsim
