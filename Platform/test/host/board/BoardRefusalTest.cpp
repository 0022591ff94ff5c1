// What is wrong with a description is told with its line and with what would be right.
#include "BoardDescription.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ostream>

using namespace hwapi::board;

namespace {

struct Refusal {
  const char* name;
  const char* toml;
  unsigned line;
  const char* remedy;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

std::string ErrorOf(const TestBoard& board, const std::string& toml) {
  board.Describe(toml);
  try {
    Load(board.Description());
  } catch (const DescriptionError& error) {
    return error.what();
  }
  return "no error";
}

class BoardRefusalTest : public testing::TestWithParam<Refusal> {
 protected:
  TestBoard m_board;
};

TEST_P(BoardRefusalTest, TellsLineAndRemedy) {
  const std::string error = ErrorOf(m_board, GetParam().toml);
  EXPECT_TRUE(error.starts_with(m_board.Description() + ':' + std::to_string(GetParam().line) + ": ")) << error;
  EXPECT_NE(error.find(GetParam().remedy), std::string::npos) << error;
  EXPECT_EQ(error.find('\n'), std::string::npos) << "one error is one line:\n" << error;
}

constexpr Refusal kRefusals[] = {
    {.name = "Syntax", .toml = "[unit]\ntype = \n", .line = 2, .remedy = "no TOML"},
    {.name = "UnknownKey", .toml = "[unit]\nverison = 'Kela'", .line = 2, .remedy = "did you mean \"version\"?"},
    {.name = "UnknownTable", .toml = "\n[[tempratures]]\n", .line = 2, .remedy = "did you mean \"temperature\"?"},
    {.name = "UnknownType", .toml = "[unit]\ntype = 'kel'", .line = 2, .remedy = "Allowed: Kel, Pivo"},
    {.name = "UnknownVersion", .toml = "[unit]\nversion = 'Kelx'", .line = 2, .remedy = "did you mean \"Kela\"?"},
    {.name = "WrongType", .toml = "[unit]\ntype = 9", .line = 2, .remedy = "it must be a text in quotes"},
    {.name = "TableInsteadOfList", .toml = "[fan]\nid = 0", .line = 1, .remedy = "tables as [[fan]]"},
    {.name = "BoardOutOfRange", .toml = "[node]\nboard = 256", .line = 2, .remedy = "0 to 255"},
    {.name = "SpeedNegative", .toml = "[clock]\nspeed = -1", .line = 2, .remedy = "0 to 86400"},
    {.name = "SpeedTooHigh", .toml = "[clock]\nspeed = 86401", .line = 2, .remedy = "0 to 86400"},
    {.name = "StartWithoutOffset", .toml = "[clock]\nstart = 2024-01-31T09:30:00", .line = 2, .remedy = "with offset"},
    {.name = "StartInQuotes", .toml = "[clock]\nstart = '2024-01-31T09:30:00Z'", .line = 2, .remedy = "without quotes"},
    {.name = "StartBefore1970", .toml = "[clock]\nstart = 1969-01-31T09:30:00Z", .line = 2, .remedy = "begins there"},
    {.name = "ImpossibleDate", .toml = "[clock]\nstart = 2024-02-30T09:30:00Z", .line = 2, .remedy = "no TOML"},
    {.name = "BuildWithASlash", .toml = "[boot]\nfs1_build = 'R1/2'", .line = 2, .remedy = "such as \"R2_4.1\""},
    {.name = "EmptyBuild", .toml = "[boot]\nfs2_build = ''", .line = 2, .remedy = "such as \"R2_4.1\""},
    {.name = "EmptyGroup", .toml = "[access]\nsend = ['group:']", .line = 2, .remedy = "\"group:GROUP\""},
    {.name = "SenderNumber", .toml = "[access]\nsend = [0]", .line = 2, .remedy = "text in quotes"},
    {.name = "TagWithoutQuotes", .toml = "[tags]\napp.file = 'x'", .line = 2, .remedy = "\"whole.tag.name\""},
    {.name = "TagBeyond32Bits", .toml = "[tags]\n\"a\" = 0x100000000", .line = 2, .remedy = "a number of 32 bits"},
    {.name = "RadName", .toml = "[rad]\nhours = 24", .line = 2, .remedy = "\"0x200B5\" = 24"},
    {.name = "RadTwice", .toml = "[rad]\n\"0x10\" = 1\n\"16\" = 2", .line = 3, .remedy = "keep one of them"},
    {.name = "NoDevice", .toml = "[[temperature]]\nsim = { base = 1 }", .line = 1, .remedy = "device = 0x10000"},
    {.name = "NoBinding", .toml = "[[temperature]]\ndevice = 1", .line = 1, .remedy = "sim = { base = 41.0"},
    {.name = "BothBindings",
     .toml = "[[temperature]]\ndevice = 1\nhwmon = { chip = 'a', input = 'temp1' }\nsim = { base = 1 }",
     .line = 1,
     .remedy = "keep one of them"},
    {.name = "DeviceTwice",
     .toml = "[[temperature]]\ndevice = 1\nsim = { base = 1 }\n[[temperature]]\ndevice = 1\nsim = { base = 1 }",
     .line = 4,
     .remedy = "line 1 has it already"},
    {.name = "ChipWithPath",
     .toml = "[[temperature]]\ndevice = 1\nhwmon = { chip = '../x', input = 'temp1' }",
     .line = 3,
     .remedy = "one part of a path"},
    {.name = "NoTime",
     .toml = "[[temperature]]\ndevice = 1\nhwmon = { chip = 'c', input = 'temp1', deadline_ms = 0 }",
     .line = 3,
     .remedy = "1 to 10000"},
    {.name = "TooMuchTime",
     .toml = "[[fan]]\nid = 0\nhwmon = { chip = 'c', fan = 'fan1', pwm = 'pwm1', deadline_ms = 10001 }",
     .line = 3,
     .remedy = "1 to 10000"},
    {.name = "NoBase", .toml = "[[temperature]]\ndevice = 1\nsim = { load = 1 }", .line = 3, .remedy = "base = 41.0"},
    {.name = "NotANumber", .toml = "[[temperature]]\ndevice = 1\nsim = { base = nan }", .line = 3, .remedy = "to 1000"},
    {.name = "FanTwice",
     .toml = "[[fan]]\nid = 0\nsim = {}\n[[fan]]\nid = 0\nsim = {}",
     .line = 4,
     .remedy = "line 1 has it already"},
    {.name = "FanOutOfRange", .toml = "[[fan]]\nid = 16\nsim = {}", .line = 2, .remedy = "0 to 15"},
    {.name = "FanAttribute",
     .toml = "[[fan]]\nid = 0\nhwmon = { chip = 'c', fan = 'temp1', pwm = 'pwm1' }",
     .line = 3,
     .remedy = "\"fan1\", \"fan2\""},
    {.name = "RfTwice", .toml = "[[rf]]\nindex = 0\n[[rf]]\nindex = 0", .line = 3, .remedy = "line 1 has it already"},
    {.name = "FileSystem", .toml = "[boot]\nactive = 52", .line = 2, .remedy = "53 to 54"},
    {.name = "MountState", .toml = "[mounts]\nfs1 = 'readonly'", .line = 2, .remedy = "did you mean \"read-only\"?"},
};

INSTANTIATE_TEST_SUITE_P(Refused, BoardRefusalTest, testing::ValuesIn(kRefusals),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(BoardRefusal, EveryErrorIsToldInTheOrderOfLines) {
  const TestBoard board;
  const std::string error = ErrorOf(board, "[[fan]]\nid = 99\nsim = {}\n[unit]\ntype = 'X'\n[nodes]\n");
  const std::string file = board.Description();
  const auto second = error.find('\n' + file + ":5: ");
  const auto third = error.find('\n' + file + ":6: ");
  EXPECT_TRUE(error.starts_with(file + ":2: ")) << error;
  EXPECT_NE(second, std::string::npos) << error;
  EXPECT_NE(third, std::string::npos) << error;
  EXPECT_LT(second, third);
}

TEST(BoardRefusal, AMissingFileIsToldWithTheWayToNameAnother) {
  try {
    Load("/nowhere/board.toml");
    FAIL() << "loaded";
  } catch (const DescriptionError& error) {
    EXPECT_STREQ(error.what(),
                 "/nowhere/board.toml: cannot be read: No such file or directory; name a readable board description in "
                 "HWAPI_BOARD or with --board");
  }
}

TEST(BoardRefusal, APipeIsToldAsWhatItIs) {
  const TestBoard board;
  ASSERT_EQ(mkfifo(board.Description().c_str(), 0600), 0);
  try {
    Load(board.Description());
    FAIL() << "loaded";
  } catch (const DescriptionError& error) {
    EXPECT_EQ(error.what(), board.Description() +
                                ": cannot be read: it is a FIFO; name a readable board description in "
                                "HWAPI_BOARD or with --board");
  }
}

TEST(BoardRefusal, AWrongOwnBoardEndsTheProcessWithStatus2) {
  const TestBoard board;
  board.Describe("[unit]\nsize = 1");
  EXPECT_EXIT(OwnBoard(), testing::ExitedWithCode(2), "board.toml:2: unknown key \"size\"");
}

}  // namespace
