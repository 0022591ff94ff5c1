// What was found of a fan stays on record when a process is killed together with its fan guard.
#include "Daemon.h"
#include "FanBoard.h"
#include "HungDevice.h"
#include "ddal_error.h"
#include "ddal_fan.h"

#include <sys/stat.h>

#include <sstream>

namespace {

int Set() { return ddal_fan_set_pwm(0, 60); }
int SetBoth() { return Set() | ddal_fan_set_fan_pwm_freq(0, 1000); }
int Init() { return ddal_init(nullptr, 0); }

class FanRecordTest : public testing::Test {
 protected:
  FanRecordTest() { process::AdoptOrphans(); }
  ~FanRecordTest() override { AwaitAll(); }

  static void AwaitAll() {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
  }
  /// Lets a process change a fan, and kills it and its guard.
  template <typename Work>
  void KillBothAfter(Work work) {
    Daemon daemon(work);
    ASSERT_EQ(daemon.Result(), DDAL_OK);
    process::KillOthersChild(daemon.Guard());
    daemon.Kill();
    AwaitAll();
  }
  std::string State(int fan = 1) const {
    const std::string pwm = "pwm" + std::to_string(fan);
    return m_fans.Shown(pwm) + ' ' + m_fans.Shown(pwm + "_enable") + ' ' + m_fans.Shown(pwm + "_freq");
  }
  std::filesystem::path Note(int fan = 0) const {
    return m_fans.Board().Folder() / ("run/fan" + std::to_string(fan) + ".found");
  }
  std::string Contents() const {
    std::stringstream text;
    text << std::ifstream(Note()).rdbuf();
    return text.str();
  }
  /// @return exit status of the restoring program
  static int Restore() {
    const pid_t pid = fork();
    if (pid == 0) {
      execl(RESTORE_PROGRAM, RESTORE_PROGRAM, nullptr);
      _exit(127);
    }
    return process::AwaitEnd(pid);
  }

  FanBoard m_fans;
};

constexpr const char* kFound = "80 2 25000";
constexpr const char* kChanged = "153 1 1000";

TEST_F(FanRecordTest, AFanIsOnRecordAsLongAsItIsChanged) {
  Daemon daemon(SetBoth);
  EXPECT_TRUE(std::filesystem::exists(Note()));
  EXPECT_FALSE(std::filesystem::exists(Note(1)));
  daemon.Go();
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, AGuardThatHandsBackTakesTheFansOffTheRecord) {
  Daemon daemon(SetBoth);
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, TheNextStartHandsBackWhatWasOnRecord) {
  KillBothAfter(SetBoth);
  ASSERT_EQ(State(), kChanged);
  Daemon next(Init);
  EXPECT_EQ(State(), kFound);
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, TheNextChangeBelievesTheRecordAndNotTheFan) {
  KillBothAfter(SetBoth);
  Daemon next([] { return ddal_fan_set_pwm(0, 10); });
  ASSERT_EQ(next.Result(), DDAL_OK);
  next.Kill();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanRecordTest, AFanThatIsNoLongerDescribedStaysOnRecord) {
  KillBothAfter(SetBoth);
  m_fans.Board().Describe("");
  EXPECT_EQ(Restore(), 1);
  EXPECT_EQ(State(), kChanged);
  EXPECT_TRUE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, AFanWhoseChipIsGoneIsTakenOffTheRecord) {
  KillBothAfter(SetBoth);
  m_fans.Unbind();
  EXPECT_EQ(Restore(), 0);
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, AFanStaysOnRecordWhileSeveralChipsFit) {
  KillBothAfter(SetBoth);
  m_fans.Board().BindChip(5, "emc2305", "3-002c");
  EXPECT_EQ(Restore(), 1);
  m_fans.Board().UnbindChip(5);
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanRecordTest, AFanStaysOnRecordWhileNoChipCanBeLookedFor) {
  KillBothAfter(SetBoth);
  const auto chips = m_fans.Path("").parent_path().parent_path();
  const auto aside = m_fans.Board().Folder() / "aside";
  std::filesystem::rename(chips, aside);
  EXPECT_EQ(Restore(), 1);
  std::filesystem::rename(aside, chips);
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanRecordTest, AFanStaysOnRecordWhileTheNameOfItsChipIsLate) {
  const HungDevice none("/nowhere");
  KillBothAfter(SetBoth);
  {
    const HungDevice device(m_fans.Path("name"));
    Daemon next(Init);
    EXPECT_TRUE(std::filesystem::exists(Note()));
  }
  AwaitAll();
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanRecordTest, AFanOfWhichAnAttributeCannotBeOpenedStaysOnRecord) {
  KillBothAfter(SetBoth);
  m_fans.Remove("pwm1_enable");
  EXPECT_EQ(Restore(), 1);
  EXPECT_TRUE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, TheProgramHandsBack) {
  KillBothAfter(SetBoth);
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, TwoFansOnOneOutputAreRestoredAsFoundFirst) {
  m_fans.Board().Describe(
      "[[fan]]\nid = 3\nhwmon = { chip = 'emc2305', fan = 'fan1', pwm = 'pwm1' }\n"
      "[[fan]]\nid = 1\nhwmon = { chip = 'emc2305', fan = 'fan2', pwm = 'pwm1' }\n");
  KillBothAfter([] { return ddal_fan_set_pwm(3, 10) | ddal_fan_set_pwm(1, 20); });
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanRecordTest, TheProgramHasNothingToDoWithoutARecord) {
  m_fans.Board().Describe("no description at all");
  EXPECT_EQ(Restore(), 0);
  EXPECT_FALSE(std::filesystem::exists(m_fans.Board().Folder() / "run/fans.lock"));
}

TEST_F(FanRecordTest, TheProgramLeavesAloneWhatALivingProcessHas) {
  Daemon daemon(SetBoth);
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kChanged);
  EXPECT_TRUE(std::filesystem::exists(Note()));
}

TEST_F(FanRecordTest, ARecordThatWasCutAnywhereIsNotBelieved) {
  KillBothAfter(SetBoth);
  const std::string whole = Contents();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    TestBoard::Write(Note(), whole.substr(0, size));
    ASSERT_EQ(Restore(), 0) << size;
    ASSERT_EQ(State(), kChanged) << size;
    ASSERT_FALSE(std::filesystem::exists(Note())) << size;
  }
}

TEST_F(FanRecordTest, ARecordWithADamagedByteIsNotBelieved) {
  KillBothAfter(SetBoth);
  const std::string whole = Contents();
  for (std::size_t at = 0; at < whole.size(); at += 7) {
    std::string damaged = whole;
    damaged[at] ^= 1;
    TestBoard::Write(Note(), damaged);
    ASSERT_EQ(Restore(), 0) << at;
    ASSERT_EQ(State(), kChanged) << at;
  }
}

TEST_F(FanRecordTest, ALinkInPlaceOfARecordIsNotFollowed) {
  KillBothAfter(SetBoth);
  const auto elsewhere = m_fans.Board().Folder() / "elsewhere";
  std::filesystem::rename(Note(), elsewhere);
  std::filesystem::create_symlink(elsewhere, Note());
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kChanged);
  EXPECT_TRUE(std::filesystem::exists(elsewhere));
}

TEST_F(FanRecordTest, APipeInPlaceOfARecordKeepsNobody) {
  ASSERT_EQ(mkfifo(Note().c_str(), 0600), 0);
  EXPECT_EQ(Restore(), 0);
  EXPECT_FALSE(std::filesystem::exists(Note()));
}

/// A second chip, "other" at 3-002d, with fan 2.
class HungFanTest : public FanRecordTest {
 protected:
  HungFanTest() {
    m_fans.Board().BindChip(8, "other", "3-002d");
    for (const auto& [attribute, text] : {std::pair{"fan1_input", "3000"}, {"pwm1", "70"}, {"pwm1_enable", "2"}}) {
      m_fans.Board().Show(8, attribute, text);
    }
    m_fans.Board().Describe(
        "[[fan]]\nid = 0\nhwmon = { chip = 'emc2305', fan = 'fan1', pwm = 'pwm1' }\n"
        "[[fan]]\nid = 2\nhwmon = { chip = 'other', fan = 'fan1', pwm = 'pwm1' }\n");
  }
  static int SetAll() { return ddal_fan_set_pwm(2, 50) | SetBoth(); }
  std::string Other() const {
    std::string line;
    std::getline(std::ifstream(m_fans.Board().Hwmon(8) / "pwm1") >> std::ws, line);
    return line;
  }
};

TEST_F(HungFanTest, AChipThatHangsKeepsNoOtherFromBeingHandedBack) {
  const HungDevice none("/nowhere");
  Daemon daemon(SetAll);
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  const HungDevice device(m_fans.Path("pwm1"));
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(Other(), "70");
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
  EXPECT_TRUE(std::filesystem::exists(Note(0)));
  EXPECT_FALSE(std::filesystem::exists(Note(2)));
}

TEST_F(HungFanTest, AProcessWhoseChipHangsEndsInOrder) {
  const HungDevice none("/nowhere");
  Daemon daemon(SetAll);
  const HungDevice device(m_fans.Path("pwm1"));
  EXPECT_EQ(daemon.Go(), 0);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
  EXPECT_EQ(Other(), "70");
}

TEST_F(HungFanTest, WhatAHungChipDidNotTakeIsHandedBackLater) {
  const HungDevice none("/nowhere");
  Daemon daemon(SetAll);
  HungDevice device(m_fans.Path("pwm1"));
  daemon.Kill();
  AwaitAll();
  ASSERT_EQ(m_fans.Shown("pwm1"), "153");
  device.Answer();
  EXPECT_EQ(Restore(), 0);
  EXPECT_EQ(State(), kFound);
}

TEST_F(HungFanTest, ARestartWhoseChipHangsRemembersWhatWasFoundAtFirst) {
  const HungDevice none("/nowhere");
  KillBothAfter(SetAll);
  HungDevice device(m_fans.Path("pwm1"));
  Daemon next([] { return ddal_fan_set_pwm(2, 30); },
              [] { _exit(process::Await([] { return SetBoth() == DDAL_OK; }) ? 0 : 1); });
  EXPECT_EQ(next.Result(), DDAL_OK);
  device.Answer();
  EXPECT_EQ(next.Go(), 0);
  AwaitAll();
  EXPECT_EQ(State(), kFound);
  EXPECT_EQ(Other(), "70");
}

}  // namespace
