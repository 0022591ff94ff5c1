/// The configuration for one start that a reset for the self-diagnosis leaves behind.
#include "PrivateRoot.h"
#include "ResetTest.h"
#include "ShellOfTheBoard.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kOneshot = "/rom/swconfig_oneshot.txt";
const std::string kHandler = "HandleApi2ResetReqMsg(): ";
constexpr u32 kDisableRp441 = 0x200CC;

/// A service whose commands go to the shell of the board, and write to a flash of the test's own.
class DiagnosticOneshotTest : public InPrivateRoot<ResetTest> {
 protected:
  void SetUp() override {
    InPrivateRoot::SetUp();
    if (IsSkipped()) return;
    if (std::system("exec bash -c true") != 0) GTEST_SKIP() << "this machine has no bash";
    StartService();
    fake::SetUtc({.year = 2024, .month = 1, .day = 31, .hour = 9, .minute = 30, .second = 5, .millisec = 678});
    m_shell.emplace();
  }

  static ResetRequest Diagnosis() { return {.category = 7}; }
  /// @return the two lines of every such file
  static std::string Lines(const std::string& date, const std::string& time) {
    return "0x200ca=" + date + "\n0x200cb=" + time + "\n";
  }
  static std::string Command(const std::string& lines) {
    return "echo -e \"" + lines + "\" > /rom/swconfig_oneshot.txt";
  }
  /// @return the commands that a time of day and a setting lead to
  std::vector<std::string> CommandsAt(const SAaTime& time) {
    fake::SetUtc(time);
    Announce(Diagnosis());
    return m_shell->Commands();
  }

  std::optional<ShellOfTheBoard> m_shell;
};

TEST_F(DiagnosticOneshotTest, TheFileHasDateAndTime) {
  Announce(Diagnosis());
  EXPECT_EQ(RealFile(kOneshot), Lines("20240131", "93005") + "\n");  // echo ends with a line feed of its own
}

TEST_F(DiagnosticOneshotTest, TheCommandIsOneTextWithTrueLineFeeds) {
  Announce(Diagnosis());
  EXPECT_THAT(m_shell->Commands(),
              ElementsAre("echo -e \"0x200ca=20240131\n0x200cb=93005\n\" > /rom/swconfig_oneshot.txt"));
}

TEST_F(DiagnosticOneshotTest, IsStoredAndAnswered) {
  EXPECT_EQ(Announce(Diagnosis()).payload, Words({0, 1, 1, 1, 7}));
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : Selfdiagnostic"));
}

TEST_F(DiagnosticOneshotTest, IsLogged) {
  Announce(Diagnosis());
  EXPECT_THAT(LinesOfTheHandler(),
              ElementsAre(Line(kInfo, kHandler + "Creating oneshot swconfig for SelfDiagnostic mode"),
                          Line(kDebug, kHandler + "Saving time for diagnostic mode: 20240131 - 93005"),
                          Line(kDebug, kHandler + "ERadHwapi_SelfDiagnosticModeDisableRP441 = 0")));
}

TEST_F(DiagnosticOneshotTest, MidnightIsZero) {
  EXPECT_THAT(CommandsAt({2024, 12, 1, 0, 0, 0, 0}), ElementsAre(Command(Lines("20241201", "0"))));
  EXPECT_EQ(RealFile(kOneshot), Lines("20241201", "0") + "\n");
  EXPECT_TRUE(fake::Logged(kDebug, kHandler + "Saving time for diagnostic mode: 20241201 - 0"));
}

TEST_F(DiagnosticOneshotTest, ATimeHasNoLeadingZero) {
  EXPECT_THAT(CommandsAt({2024, 2, 3, 0, 0, 7, 999}), ElementsAre(Command(Lines("20240203", "7"))));
}

TEST_F(DiagnosticOneshotTest, TheLastSecondOfTheLastYearFits) {
  EXPECT_THAT(CommandsAt({9999, 12, 31, 23, 59, 59, 999}), ElementsAre(Command(Lines("99991231", "235959"))));
}

TEST_F(DiagnosticOneshotTest, TheTimeIsUtc) {
  fake::SetLocalOffset(90);
  EXPECT_THAT(CommandsAt({2024, 1, 31, 22, 45, 0, 0}), ElementsAre(Command(Lines("20240131", "224500"))));
}

TEST_F(DiagnosticOneshotTest, AClockThatFailsGivesZeros) {
  fake::FailCall("AaUtcTimeGet", 1, 5);
  Announce(Diagnosis());
  EXPECT_THAT(m_shell->Commands(), ElementsAre(Command(Lines("0", "0"))));
  EXPECT_EQ(RealFile(kOneshot), Lines("0", "0") + "\n");
}

TEST_F(DiagnosticOneshotTest, AClockThatFailsIsLoggedWithItsError) {
  fake::FailCall("AaUtcTimeGet", 1, -5);
  Announce(Diagnosis());
  EXPECT_THAT(LinesOfTheHandler(),
              ElementsAre(Line(kInfo, kHandler + "Creating oneshot swconfig for SelfDiagnostic mode"),
                          Line(kDebug, kHandler + "Failed to save time for diagnostic mode (error: -5)"),
                          Line(kDebug, kHandler + "ERadHwapi_SelfDiagnosticModeDisableRP441 = 0")));
}

TEST_F(DiagnosticOneshotTest, AnySettingButZeroAddsTwoLines) {
  for (const u32 value : {1u, 2u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    fake::SetRad(kDisableRp441, value);
    fake::ClearLog();
    Announce(Diagnosis());
    const std::string lines = Lines("20240131", "93005") + "0x200c9=1\n0x20088=0\n";
    EXPECT_EQ(m_shell->Commands().back(), Command(lines)) << value;
    EXPECT_EQ(RealFile(kOneshot), lines + "\n") << value;
    EXPECT_TRUE(fake::Logged(kDebug, kHandler + "ERadHwapi_SelfDiagnosticModeDisableRP441 = " + std::to_string(value)));
  }
}

TEST_F(DiagnosticOneshotTest, OtherSettingsDoNotMatter) {
  for (const u32 id : {0x200CAu, 0x200CBu, 0x200C9u, 0x20088u, 0x200CDu}) fake::SetRad(id, 5);
  Announce(Diagnosis());
  EXPECT_THAT(m_shell->Commands(), ElementsAre(Command(Lines("20240131", "93005"))));
  EXPECT_THAT(fake::Calls("AaConfigRadGetValue"), ElementsAre(fake::Call("AaConfigRadGetValue", kDisableRp441)));
}

TEST_F(DiagnosticOneshotTest, ReplacesAnEarlierOne) {
  WriteRealFile(kOneshot, "0x200ca=20230101\nand much more than there will be");
  Announce(Diagnosis());
  EXPECT_EQ(RealFile(kOneshot), Lines("20240131", "93005") + "\n");
}

TEST_F(DiagnosticOneshotTest, IsTheOnlyFileThatTheCommandWrites) {
  Announce(Diagnosis());
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator("/rom")) names.push_back(entry.path().string());
  EXPECT_THAT(names, ElementsAre(kOneshot));
}

TEST_F(DiagnosticOneshotTest, IsMadeOncePerRequest) {
  Announce(Diagnosis());
  EXPECT_EQ(m_shell->Commands().size(), 1u);
  Announce(Diagnosis());
  EXPECT_EQ(m_shell->Commands().size(), 2u);
}

TEST_F(DiagnosticOneshotTest, IsNotMadeForOtherCategories) {
  for (const u32 category : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 8u, 9u, 0x107u, 0xFFFFFFFFu}) Announce({.category = category});
  EXPECT_THAT(m_shell->Commands(), IsEmpty());
  EXPECT_FALSE(RealFileExists(kOneshot));
}

TEST_F(DiagnosticOneshotTest, IsNotMadeForOtherBoardsAndStates) {
  for (const ResetRequest& request :
       {ResetRequest{.board = 2, .category = 7}, ResetRequest{.cpu = 2, .category = 7},
        ResetRequest{.state = 0, .category = 7}, ResetRequest{.state = 2, .category = 7}}) {
    Announce(request);
  }
  EXPECT_THAT(m_shell->Commands(), IsEmpty());
}

TEST_F(DiagnosticOneshotTest, IsMadeForTheFpgaToo) {
  Announce({.cpu = 0xD4, .extra = 4, .category = 7});
  EXPECT_EQ(m_shell->Commands().size(), 1u);
  EXPECT_THAT(Reasons(), ElementsAre("FPGA reconfiguration / Cold reset : Selfdiagnostic"));
}

TEST_F(DiagnosticOneshotTest, IsMadeForAnUnknownResetTypeToo) {
  Announce({.extra = 18, .category = 7});
  EXPECT_EQ(RealFile(kOneshot), Lines("20240131", "93005") + "\n");
  EXPECT_THAT(Reasons(), ElementsAre("Unknown reset reason : Selfdiagnostic"));
  EXPECT_EQ(LinesOfTheHandler().front(), Line(kError, kHandler + "unknown reset reason 18"));
}

TEST_F(DiagnosticOneshotTest, ACommandThatFailsIsAWarning) {
  MakeRealDir(kOneshot);
  Announce(Diagnosis());
  EXPECT_EQ(LinesOfTheHandler().back(),
            Line(kWarning, kHandler + "Failed to create oneshot swconfig for SelfDiagnostic mode"));
}

TEST_F(DiagnosticOneshotTest, ACommandThatFailsIsStoredAndAnsweredAllTheSame) {
  MakeRealDir(kOneshot);
  EXPECT_EQ(Announce(Diagnosis()).payload, Words({0, 1, 1, 1, 7}));
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : Selfdiagnostic"));
  EXPECT_EQ(fake::FileContent(kStandbyFile), fake::FileContent(kBoardFile));
}

TEST_F(DiagnosticOneshotTest, EveryResultButZeroIsAFailure) {
  for (const int result : {-1, 1, 256, 127 << 8, 9}) {
    m_shell->AnswerWith(result);
    fake::ClearLog();
    Announce(Diagnosis());
    EXPECT_EQ(LinesOfTheHandler().back().level, kWarning) << result;
  }
  m_shell->AnswerWith(0);
  fake::ClearLog();
  Announce(Diagnosis());
  EXPECT_EQ(LinesOfTheHandler().back().level, kDebug);
}

TEST_F(DiagnosticOneshotTest, IsMadeBeforeTheReasonIsStored) {
  m_shell->AnswerWith(1);
  Announce({.extra = 18, .category = 7});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", kError, 131143, kHandler + "unknown reset reason 18"},
       {"AaSysLogPrintE", kInfo, 131143, kHandler + "Creating oneshot swconfig for SelfDiagnostic mode"},
       {"AaUtcTimeGet"},
       {"AaConfigRadGetValue", kDisableRp441},
       {"AaSysLogPrintE", kWarning, 131143, kHandler + "Failed to create oneshot swconfig for SelfDiagnostic mode"},
       {"ddal_boot_get_reset_loop_count"},
       {"AaFileOpen", kBoardFile, "w"},
       {"AaSysComMsgCreateReply", kResetResp}}));
  EXPECT_EQ(fake::Calls({"AaConfigRadGetValue", "ddal_boot_get_reset_loop_count"})[0].function, "AaConfigRadGetValue");
}

TEST_F(DiagnosticOneshotTest, TheCommandHasEndedWhenTheBootStateIsRead) {
  MakeRealDir("/ffs/fs1");
  setenv("BASH_ENV", "/rom/profile", 1);  // what each command of this shell begins with
  WriteRealFile("/rom/profile", "ln -s /ffs/fs1 /ffs/run\n");
  Announce(Diagnosis());
  EXPECT_NE(HistoryIn(kBoardFile).find(" Runnig partition: /ffs/fs1 "), std::string::npos) << HistoryIn(kBoardFile);
}

TEST_F(DiagnosticOneshotTest, IsMadeAlsoWhenTheReplyFails) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(Diagnosis().Message()), "Message handling error: Creation of API_RESET_RESP_MSG failed");
  EXPECT_TRUE(RealFileExists(kOneshot));
}

TEST_F(DiagnosticOneshotTest, CanBeMadeThroughTheAdapter) {
  ClimateServiceBlackBoxData(EUnitVersion_Kela, EUnitType_Kel).CreateDiagnosticModeOneshotSwconfig();
  EXPECT_EQ(RealFile(kOneshot), Lines("20240131", "93005") + "\n");
  EXPECT_EQ(fake::FileContent(kBoardFile), std::nullopt);
}

/// Texts that a shell would not take as they are.
class HostileDiagnosisTest : public DiagnosticOneshotTest, public testing::WithParamInterface<const char*> {};

TEST_P(HostileDiagnosisTest, DoesNotReachTheShell) {
  Announce({.category = 7, .extended = GetParam()});
  EXPECT_THAT(m_shell->Commands(), ElementsAre(Command(Lines("20240131", "93005"))));
  EXPECT_EQ(RealFile(kOneshot), Lines("20240131", "93005") + "\n");
  EXPECT_FALSE(RealFileExists("/rom/x"));
  EXPECT_EQ(Reasons().back(), std::string("Warm reset : Selfdiagnostic (") + GetParam() + ")");
}

INSTANTIATE_TEST_SUITE_P(Text, HostileDiagnosisTest,
                         testing::Values("$(touch /rom/x)", "`touch /rom/x`", "\"; touch /rom/x; echo \"",
                                         "' ; touch /rom/x ; '", "x > /rom/x", "| touch /rom/x", "& touch /rom/x &",
                                         "${HOME}", "\\", "\"", "%s%n", "0x200c9=1"));

}  // namespace
}  // namespace ps::hwapi::common::climate
