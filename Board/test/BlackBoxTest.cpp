// The black box on a whole board: its files, what is collected of them, what survives a restart.
#include "BlackBoxBoard.h"

#include <algorithm>
#include <csignal>
#include <cstdint>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBootImageTag = "sys.hwapi.bootimage.link.created";

class BlackBoxTest : public BlackBoxBoard {
 protected:
  /// @return the stored copies of a key, oldest first
  std::vector<std::string> Copies(const std::string& key) const {
    std::vector<std::string> copies;
    for (const fs::directory_entry& entry : fs::directory_iterator(Lifedata(""))) {
      const std::string name = entry.path().filename();
      if (name.starts_with("blackbox_") && name.ends_with("_" + key)) copies.push_back(name);
    }
    std::sort(copies.begin(), copies.end());
    return copies;
  }
  /// Asks the black box to keep a copy of a file. @return the answer
  Result StoreFile(const std::string& source, const std::string& key, unsigned keep) const {
    std::string payload = Number(7) + Number(keep);
    payload += Padded(source, 128) + Padded(key, 128);
    return Clmctl({"send", "--to", "blackbox", "--id", "0x1302", "--timeout", "20s", "--hex", Hex(payload)});
  }

 private:
  static std::string Number(std::uint32_t value) { return {reinterpret_cast<const char*>(&value), sizeof value}; }
  static std::string Padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
  }
  static std::string Hex(const std::string& bytes) {
    std::string hex;
    for (const char byte : bytes) {
      constexpr const char* kDigits = "0123456789abcdef";
      hex += kDigits[static_cast<unsigned char>(byte) >> 4];
      hex += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return hex;
  }
};

TEST_F(BlackBoxTest, FlashIsLaidOutForTheRunningImage) {
  UpAtSpeed(kClockSpeed, {"--no-daemon"});
  const fs::path ffs = fs::path(StateFolder()) / "ffs";
  EXPECT_EQ(fs::read_symlink(ffs / "run"), "/ffs/fs1");
  EXPECT_EQ(fs::read_symlink(ffs / "stb"), "/ffs/fs2");
  EXPECT_TRUE(fs::exists(ffs / "fs2/TargetBD_R2_4.0.xml"));
  EXPECT_FALSE(FileText(Running("logs/alarms")).empty());
}

TEST_F(BlackBoxTest, ConfigurationFileIsThereOnceTheBoardIsUp) {
  UpAtSpeed(kClockSpeed);
  EXPECT_NE(FileText(Lifedata("blackbox_config")).find("blackbox=/ffs/run/config/lifedata/blackbox\n"),
            std::string::npos);
}

TEST_F(BlackBoxTest, MeasurementLeavesATraceAfterAnHour) {
  UpAtSpeed(kHoursInSeconds);
  ASSERT_EQ(Clmctl({"temp", "start", "Kel", "--interval", "1min"}).status, 0);
  EXPECT_TRUE(WaitForText(Lifedata("blackbox_temperature"), "KEL_MCU"));
  EXPECT_TRUE(WaitForText(Lifedata("blackbox"), "SERIAL NUMBER: K9014800037\n"));
  EXPECT_EQ(FileText(Lifedata("blackbox_alarms")), FileText(Running("logs/alarms")));
}

TEST_F(BlackBoxTest, BoardFileTellsBuildsAndResetReason) {
  UpAtSpeed(kRealTime);
  ASSERT_TRUE(WaitForText(Lifedata("blackbox"), "PowerOn reset Runnig partition: /ffs/fs1 RLC: 0\n"));
  const std::string text = FileText(Lifedata("blackbox"));
  EXPECT_NE(text.find("SW VERSION: active: R2_4.1\n"), std::string::npos) << text;
  EXPECT_NE(text.find("SW VERSION: passive: R2_4.0\n"), std::string::npos) << text;
}

TEST_F(BlackBoxTest, ResetTypeThatIsSetIsFoundByTheNextStart) {
  UpAtSpeed(kRealTime);
  ASSERT_EQ(Boardsim({"reset-type", "2"}).status, 0);
  RestartDaemon();
  EXPECT_TRUE(WaitForText(Lifedata("blackbox"), "Watchdog reset"));
}

TEST_F(BlackBoxTest, ResetServiceThatAnswersLateIsWaitedFor) {
  UpAtSpeed(kRealTime);
  ASSERT_EQ(Boardsim({"reset-type", "10"}).status, 0);
  ASSERT_EQ(Boardsim({"reset-type", "late=1"}).status, 0);
  RestartDaemon();
  EXPECT_TRUE(WaitForText(Lifedata("blackbox"), "Temperature reset"));
}

TEST_F(BlackBoxTest, ResetServiceThatFailsOrIsSilentDoesNotKeepTheDaemonDown) {
  UpAtSpeed(kHoursInSeconds);
  const std::string log = StateFolder() + "/clm.log";
  ASSERT_EQ(Boardsim({"reset-type", "fail=2"}).status, 0);
  RestartDaemon();
  EXPECT_TRUE(WaitForText(log, "Error 2 returned by HWAPI_RESET_SERVICE"));
  ASSERT_EQ(Boardsim({"reset-type", "silent"}).status, 0);
  RestartDaemon();
  EXPECT_TRUE(WaitForText(log, "No response to API_OM_GET_RP_RAM_REQ_MSG"));
}

TEST_F(BlackBoxTest, AnswerThatComesTooLateIsNoLongerWaitedFor) {
  UpAtSpeed(4);  // ten board seconds are two and a half
  ASSERT_EQ(Boardsim({"reset-type", "2"}).status, 0);
  ASSERT_EQ(Boardsim({"reset-type", "late=13"}).status, 0);
  RestartDaemon();
  EXPECT_TRUE(WaitForText(StateFolder() + "/clm.log", "last reset type is unknown (-1)"));
  EXPECT_EQ(FileText(Lifedata("blackbox")).find("Watchdog reset"), std::string::npos);
}

TEST_F(BlackBoxTest, StartGoesOnOnceTheResetServiceIsThere) {
  UpAtSpeed(kClockSpeed);
  ASSERT_EQ(Boardsim({"tag", "app.hwapi.online.4a7", "7"}).status, 0);
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4d9"});
  ASSERT_TRUE(tag->WaitForText("4d9 6"));
  kill(DaemonPid(), SIGTERM);
  ASSERT_TRUE(tag->WaitForText("4d9 7"));
  ASSERT_EQ(Boardsim({"tag", "app.hwapi.online.4a7", "6"}).status, 0);
  EXPECT_TRUE(tag->WaitForText("4d9 6", 2));
}

TEST_F(BlackBoxTest, DaemonThatWaitsForTheResetServiceCanBeEnded) {
  UpAtSpeed(kClockSpeed);
  ASSERT_EQ(Boardsim({"tag", "app.hwapi.online.4a7", "7"}).status, 0);
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4b6"});
  ASSERT_TRUE(tag->WaitForText("4b6 6"));
  kill(DaemonPid(), SIGTERM);
  ASSERT_TRUE(tag->WaitForText("4b6 7"));
  ASSERT_TRUE(tag->WaitForText("4b6 6", 2));  // the next one waits in its start
  const unsigned farewells = tag->Count("4b6 7");
  kill(DaemonPid(), SIGTERM);
  EXPECT_TRUE(tag->WaitForText("4b6 7", farewells + 1));
}

TEST_F(BlackBoxTest, FileSystemsOfTheFlashAreInTheDaemonsMountTable) {
  UpAtSpeed(kClockSpeed);
  const std::string mounts = FileText("/proc/" + std::to_string(DaemonPid()) + "/mounts");
  EXPECT_NE(mounts.find(" /ffs/fs1 "), std::string::npos) << mounts;
  EXPECT_NE(mounts.find(" /ffs/fs2 "), std::string::npos) << mounts;
}

TEST_F(BlackBoxTest, BootImageTagLetsTheFilesBeWrittenAndGoesBack) {
  UpAtSpeed(kClockSpeed);
  ASSERT_EQ(Boardsim({"tag", kBootImageTag, "0"}).status, 0);
  auto tag = StartClmctl({"tag", "watch", kBootImageTag});
  ASSERT_TRUE(tag->WaitForText("created 0"));  // from here on it sees every value
  ASSERT_EQ(Boardsim({"tag", kBootImageTag, "1"}).status, 0);
  ASSERT_TRUE(tag->WaitForText("created 1"));
  EXPECT_TRUE(tag->WaitForText("created 0", 2));
  EXPECT_EQ(FileText(Lifedata("blackbox_sfp")), FileText(Running("logs/sfp")));
}

TEST_F(BlackBoxTest, StoredDataIsToldToTheSoftwareDownloadService) {
  UpAtSpeed(kClockSpeed);
  ASSERT_EQ(Clmctl({"send", "--to", "blackbox", "--id", "0x43a2", "--hex", "2a000000", "--expect", "0"}).status, 0);
  EXPECT_TRUE(WaitForText(StateFolder() + "/boardsim.log", "transaction 42 is stored, status 0"));
}

/// The techlog of a board whose trace has begun.
class TechlogTest : public BlackBoxTest {
 protected:
  std::string Techlog() const { return Folder() / "new" / "techlog"; }
};

TEST_F(TechlogTest, HoldsEveryFileOfTheBlackBox) {
  UpAtSpeed(kClockSpeed);
  const Result collect = Clmctl({"techlog", "collect", Techlog(), "--timeout", "20s"});
  ASSERT_EQ(collect.status, 0) << collect.out << collect.err;
  for (const char* name : {"blackbox", "blackbox_temperature", "blackbox_alarms", "blackbox_sfp"}) {
    EXPECT_TRUE(fs::exists(fs::path(Techlog()) / name)) << name;
    EXPECT_EQ(FileText(fs::path(Techlog()) / name), FileText(Lifedata(name))) << name;
  }
}

TEST_F(TechlogTest, SaysWhichFileIsNotReadyAndCopiesTheOthers) {
  UpAtSpeed(kClockSpeed);
  fs::remove(Running("logs/alarms"));
  const Result collect = Clmctl({"techlog", "collect", Techlog(), "--json", "--timeout", "20s"});
  EXPECT_EQ(collect.status, 1);
  unsigned copied = 0;
  for (const nlohmann::json& file : JsonLines(collect.out)) {
    EXPECT_EQ(file["result"], file["name"] == "blackbox_alarms" ? "not_ready" : "copied") << file;
    if (file["result"] == "copied") ++copied;
  }
  EXPECT_EQ(copied, 3u);
}

TEST_F(TechlogTest, OfABoardWithoutADaemonCannotBeCollected) {
  UpAtSpeed(kClockSpeed, {"--no-daemon"});
  const Result collect = Clmctl({"techlog", "collect", Techlog()});
  EXPECT_EQ(collect.status, 3);
  EXPECT_NE(collect.err.find("boardsim status"), std::string::npos) << collect.err;
}

TEST_F(TechlogTest, NeedsAFolder) { EXPECT_EQ(Clmctl({"techlog", "collect"}).status, 2); }

/// Stored copies, made in board seconds that differ: their names carry the time.
class StoredFileTest : public BlackBoxTest {
 protected:
  void StoreTimes(unsigned times) {
    Write("state/ffs/fs1/logs/selftest.txt", "passed\n");
    for (unsigned i = 0; i < times; ++i) {
      const std::size_t before = Copies("selftest").size();
      const Result stored = StoreFile("/ffs/run/logs/selftest.txt", "selftest", 2);
      ASSERT_EQ(stored.status, 0) << stored.err;
      ASSERT_NE(stored.out.find("0x1303 1/1/0x4d9 0700000000000000\n"), std::string::npos) << stored.out;
      ASSERT_EQ(Copies("selftest").size(), std::min<std::size_t>(before + 1, 3));
      ASSERT_EQ(Boardsim({"clock", "+1min"}).status, 0);
    }
  }
};

TEST_F(StoredFileTest, ThreeCopiesAreKept) {
  UpAtSpeed(kClockSpeed);
  StoreTimes(4);
  const std::vector<std::string> copies = Copies("selftest");
  ASSERT_EQ(copies.size(), 3u);
  for (const std::string& copy : copies) EXPECT_EQ(FileText(Lifedata(copy)), "passed\n") << copy;
}

TEST_F(StoredFileTest, CopiesAreFoundAgainByTheNextDaemon) {
  UpAtSpeed(kClockSpeed);
  StoreTimes(3);
  RestartDaemon();
  StoreTimes(1);
  const std::string techlog = Folder() / "techlog";
  ASSERT_EQ(Clmctl({"techlog", "collect", techlog, "--timeout", "20s"}).status, 0);
  for (const std::string& copy : Copies("selftest")) EXPECT_EQ(FileText(fs::path(techlog) / copy), "passed\n") << copy;
}

TEST_F(StoredFileTest, SourceThatIsNotThereIsRefused) {
  UpAtSpeed(kClockSpeed);
  const Result stored = StoreFile("/ffs/run/none", "none", 2);
  EXPECT_NE(stored.out.find("0x1303 1/1/0x4d9 0700000004000000\n"), std::string::npos) << stored.out;
  EXPECT_TRUE(Copies("none").empty());
}

}  // namespace
}  // namespace boardtest
