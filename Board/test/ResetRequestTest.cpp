/// Announced resets from the outside: what clmctl and boardsim take and refuse, and hostile texts.
#include "ResetBoard.h"

#include <algorithm>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

class ResetRequestTest : public ResetBoard {
 protected:
  fs::path OneShotFile() const { return fs::path(StateFolder()) / "rom/swconfig_oneshot.txt"; }
};

TEST_F(ResetRequestTest, HistoryIsATableOfTimeReasonCategoryTextPartitionAndCounter) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("FPGA", "User").status, 2);
  ASSERT_EQ(Announce("RemoteColdReset", "Recovery", {"--info", "site 4, rack 2"}).status, 0);
  const Result shown = Clmctl({"blackbox", "show", "board"});
  ASSERT_EQ(shown.status, 0) << shown.err;
  for (const char* text : {"RESET AT, UTC", "REASON", "CATEGORY", "EXTENDED INFORMATION", "PARTITION", "COUNTER",
                           "Remote cold reset", "Recovery", "site 4, rack 2", "/ffs/fs1"}) {
    EXPECT_NE(shown.out.find(text), std::string::npos) << text << "\n" << shown.out;
  }
}

TEST_F(ResetRequestTest, LastResetIsToldToThoseWhoAsk) {
  UpWithClock();
  ASSERT_EQ(Announce("WarmReset", "Network", {"--info", "new address"}).status, 0);
  const Result info = Clmctl({"blackbox", "reset-info", "--json"});
  ASSERT_EQ(info.status, 0) << info.err;
  EXPECT_NE(info.out.find("\"Network\""), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("\"new address\""), std::string::npos) << info.out;
}

TEST_F(ResetRequestTest, TypesAndCategoriesAreListed) {
  UpWithClock();
  const Result list = Clmctl({"reset", "--list"});
  ASSERT_EQ(list.status, 0);
  EXPECT_NE(list.out.find("type ColdReset 4\n"), std::string::npos) << list.out;
  EXPECT_NE(list.out.find("category CommissioningChange 5\n"), std::string::npos) << list.out;
  EXPECT_EQ(JsonLines(Clmctl({"reset", "--list", "--json"}).out).size(),
            static_cast<std::size_t>(std::count(list.out.begin(), list.out.end(), '\n')));
}

TEST_F(ResetRequestTest, AnswerIsAnObjectWithConstantKeys) {
  UpWithClock();
  const auto answer = JsonLines(Announce("ColdReset", "User", {"--cpu", "0xd4", "--json"}).out);
  ASSERT_EQ(answer.size(), 1u);
  const nlohmann::json expected = {{"type", "ColdReset"},  {"type_number", 4}, {"category", "User"},
                                   {"category_number", 1}, {"board", 1},       {"cpu", 0xD4},
                                   {"success_code", 0}};
  EXPECT_EQ(answer[0], expected);
}

TEST_F(ResetRequestTest, FileIsStoredUnderTheNameThatIsAsked) {
  UpWithClock();
  const std::vector<std::string> command = {"blackbox", "store-file", "/ffs/run/logs/alarms",
                                            "--as",     "night",      "--keep"};
  for (const char* keep : {"2", "0"}) {
    std::vector<std::string> whole = command;
    whole.push_back(keep);
    ASSERT_EQ(Clmctl(whole).status, 0);
    ASSERT_EQ(Boardsim({"clock", "+1min"}).status, 0);
  }
  unsigned copies = 0;
  for (const auto& entry : fs::directory_iterator(Lifedata(""))) {
    if (!entry.path().string().ends_with("_night")) continue;
    ++copies;
    EXPECT_EQ(FileText(entry.path()), FileText(Running("logs/alarms")));
  }
  EXPECT_EQ(copies, 1u);
}

TEST_F(ResetRequestTest, ResetOfAnotherBoardIsAnsweredAndNotRecorded) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  EXPECT_EQ(Announce("ColdReset", "User", {"--board", "2"}).status, 0);
  EXPECT_EQ(Announce("ColdReset", "User", {"--cpu", "2"}).status, 0);
  EXPECT_EQ(History().size(), 1u);
}

TEST_F(ResetRequestTest, AnswerIsToldWithoutClaimingThatItWasRecorded) {
  UpWithClock();
  const Result announced = Announce("ColdReset", "User", {"--board", "9"});
  EXPECT_EQ(announced.status, 0);
  EXPECT_EQ(announced.out,
            "the service has answered: ColdReset (User) of board 9, processor 1\n"
            "It records only resets of its own board, of its own processor or the FPGA; `clmctl blackbox reset-info` "
            "shows the last one.\n");
}

TEST_F(ResetRequestTest, SelfDiagnosisLeavesAOneShotConfiguration) {
  UpWithClock();
  ASSERT_EQ(Boardsim({"clock", "2031-01-31T09:30:05Z"}).status, 0);
  ASSERT_EQ(Announce("SystemModuleSelfDiagnosticReset", "SelfDiagnostic").status, 0);
  EXPECT_TRUE(FileText(OneShotFile()).starts_with("0x200ca=20310131\n0x200cb=930")) << FileText(OneShotFile());
}

TEST_F(ResetRequestTest, TextOfAClientReachesNoShell) {
  UpWithClock();
  const char* const hostile = "\"; touch /rom/x; $(touch /rom/x) `touch /rom/x` %s%n | x";
  ASSERT_EQ(Announce("WarmReset", "SelfDiagnostic", {"--info", hostile}).status, 0);
  EXPECT_FALSE(fs::exists(fs::path(StateFolder()) / "rom/x"));
  const std::string settings = FileText(OneShotFile());
  EXPECT_EQ(std::count(settings.begin(), settings.end(), '\n'), 2 + 1) << settings;  // echo ends with one of its own
  EXPECT_NE(Reasons().back().find(hostile), std::string::npos) << Reasons().back();
}

TEST_F(ResetRequestTest, LineFeedInATextCostsNoOtherEntry) {
  UpWithClock();
  ASSERT_EQ(Announce("ColdReset", "User", {"--info", "one\ntwo"}).status, 0);
  const std::vector<std::string> before = History();
  Reset({"13"});
  ASSERT_EQ(Announce("WarmReset", "User").status, 0);
  const std::vector<std::string> after = History();
  ASSERT_EQ(after.size(), before.size() + 1);
  EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin()));
}

TEST_F(ResetRequestTest, WrongAnnouncementsAreRefusedBeforeAnythingIsSent) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  EXPECT_EQ(Announce("NoSuchReset", "User").status, 2);
  EXPECT_EQ(Announce("ColdReset", "NoSuchCategory").status, 2);
  EXPECT_EQ(Announce("ColdReset", "User", {"--info", std::string(60, 'x')}).status, 2);
  EXPECT_EQ(Clmctl({"reset", "ColdReset"}).status, 2);
  EXPECT_EQ(History().size(), 1u);
}

TEST_F(ResetRequestTest, WrongBoardResetsAreRefused) {
  UpWithClock();
  const pid_t daemon = DaemonPid();
  const std::vector<std::vector<std::string>> wrong = {
      {"--partition", "3"}, {"--counter", "many"}, {"--clock", "soon"}, {"late"}};
  for (const std::vector<std::string>& options : wrong) {
    std::vector<std::string> command = {"reset"};
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(Boardsim(command).status, 2) << options.front();
  }
  EXPECT_EQ(DaemonPid(), daemon);
}

}  // namespace
}  // namespace boardtest
