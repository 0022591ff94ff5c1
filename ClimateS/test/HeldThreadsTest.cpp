/// A reset is announced while another thread is held at one of its driver or file calls.
#include "FailingMemory.h"
#include "HeldThread.h"
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kSecond = 1'000'000;
constexpr u32 kUpdateTimerRad = 0x200B5;
constexpr u32 kWatchdog = 2;

BlackBoxData& TheBlackBox() { return *BlackBoxData::getInstance(); }

/// What another thread does, and what it needs for it.
struct Other {
  const char* name;
  void (*prepare)();
  void (*work)();

  friend std::ostream& operator<<(std::ostream& out, const Other& other) { return out << other.name; }
};

const Other kOthers[] = {
    {"FileStoringThread", [] { fake::SetRad(kUpdateTimerRad, 1); }, [] { TheBlackBox().handleDataWritingTimeout(); }},
    {"ThreadThatWaitsForTheClock", [] { TheBlackBox().startWaitingForNTPTime(kWatchdog); },
     [] { TheBlackBox().writeResetReasonToBlackbox(); }},
    {"CollectorOfTheBoardFile", [] { fake::RemoveAll(kBoardFile); }, [] { techlogPrepareFileCb("blackbox", nullptr); }},
    {"CollectorOfTheTrace", [] { fake::RemoveAll(kTraceFile); },
     [] { techlogPrepareFileCb("blackbox_temperature", nullptr); }},
    {"CollectorOfTheAlarms", [] { fake::RemoveAll(kAlarmsFile); },
     [] { techlogPrepareFileCb("blackbox_alarms", nullptr); }},
    {"CollectorOfTheSfpLog", [] { fake::RemoveAll(kSfpFile); }, [] { techlogPrepareFileCb("blackbox_sfp", nullptr); }},
};

/// A service that records readings.
class HeldThreadsTest : public ResetTest {
 protected:
  void StartRecording(EUnitVersion version = EUnitVersion_Kela, EUnitType type = EUnitType_Kel) {
    fake::Unit().type = type;
    fake::SetFile(kOamAlarmsFile, "alarms");
    fake::SetFile(kOamSfpFile, "sfp");
    Start(version);
    ASSERT_EQ(TheBlackBox().enableTemperatureTrace(), 1u);
    TheBlackBox().takeSnapshot();
    Forget();
  }

  /// Announces a reset.
  /// @return how long its answer took, in microseconds of the board's time
  static std::uint64_t TimeOfAnswer(const std::string& mark) {
    const std::uint64_t begin = fake::Now();
    Announce({.extended = mark});
    return fake::Now() - begin;
  }
  static std::string ContentOf(const std::string& path) { return fake::FileContent(path).value_or("(no file)"); }
  static std::string Newest() { return Reasons().empty() ? "(none)" : Reasons().back(); }
};

/// Another thread, on a unit without and on one with product data in its board file.
class EachHeldCallTest : public HeldThreadsTest, public testing::WithParamInterface<std::tuple<Other, bool>> {
 protected:
  EachHeldCallTest() {
    const bool hasProducts = std::get<1>(GetParam());
    StartRecording(hasProducts ? EUnitVersion_Pivoa : EUnitVersion_Kela, hasProducts ? EUnitType_Pivo : EUnitType_Kel);
  }

  /// Announces a reset while the thread is held at a moment, and lets it go on afterwards.
  /// @return whether it came to that moment
  static bool AnnounceAt(unsigned moment) {
    const Other& other = std::get<0>(GetParam());
    other.prepare();
    HeldThread thread(other.work, "", moment);
    SCOPED_TRACE("moment " + std::to_string(moment) + ", " + thread.Place());
    const std::string mark = "at moment " + std::to_string(moment);
    const std::string reason = "Warm reset : User (" + mark + ")";
    EXPECT_LE(TimeOfAnswer(mark), kSecond);
    EXPECT_EQ(Newest(), reason) << "when it is answered";
    EXPECT_THAT(ContentOf(kStandbyFile), HasSubstr(reason));
    thread.Finish();
    EXPECT_EQ(Newest(), reason) << "when the other thread is through";
    EXPECT_FALSE(thread.GaveUp());
    return !thread.Place().empty();
  }
};

TEST_P(EachHeldCallTest, KeepsTheAnswerNoLongerThanASecondAndTheResetInTheFile) {
  unsigned moment = 1;
  while (!HasFailure() && AnnounceAt(moment)) ++moment;
  EXPECT_GT(moment, 4u) << "there are calls to be held at";
}

INSTANTIATE_TEST_SUITE_P(Of, EachHeldCallTest, testing::Combine(testing::ValuesIn(kOthers), testing::Bool()),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) +
                                  (std::get<1>(test.param) ? "WithProductData" : "");
                         });

void WriteBoardFile() { TheBlackBox().createBlackboxFile(); }
void WriteTrace() { TheBlackBox().writeTempAndSpeedDataToFile(); }
constexpr unsigned kBeforeTheFirst = 1;
constexpr unsigned kBeforeTheSecond = 3;

TEST_F(HeldThreadsTest, WhenNobodyElseWritesNothingIsWaitedFor) {
  StartRecording();
  EXPECT_EQ(TimeOfAnswer(""), 0u);
  EXPECT_THAT(fake::Calls("AaSysTimeSleep"), IsEmpty());
}

TEST_F(HeldThreadsTest, DriverCallsAreNotWaitedFor) {
  StartRecording();
  for (const char* function :
       {"ApiGetModuleProductionCode", "ddal_devicetree_get_isti", "ddal_devicetree_get_ecc_double"}) {
    const HeldThread thread(WriteBoardFile, function, kBeforeTheFirst);
    EXPECT_EQ(thread.Place(), function);
    EXPECT_EQ(TimeOfAnswer(""), 0u);
  }
}

TEST_F(HeldThreadsTest, AFileThatIsPutInPlaceIsWaitedForUntilItIs) {
  StartRecording();
  HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  fake::After(300'000, [&thread] { thread.Finish(); });
  EXPECT_EQ(TimeOfAnswer("late"), 300'000u);
  EXPECT_EQ(Newest(), "Warm reset : User (late)");
}

TEST_F(HeldThreadsTest, TheCopyIsMadeWhenNobodyPutsAFileInPlaceAnyMore) {
  StartRecording();
  HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  fake::After(300'000, [&thread] { thread.Finish(); });
  Announce({});
  const std::vector<fake::Call> calls = fake::Calls({"AaFileOpen", "AaFileClose", "AaFileCopy"});
  const auto copy = std::ranges::find(calls, fake::Call("AaFileCopy", kBoardFile, kStandbyFile));
  const auto behindTheCopy = std::vector<fake::Call>(copy, calls.end());
  EXPECT_THAT(behindTheCopy, ElementsAre(fake::Call("AaFileCopy", kBoardFile, kStandbyFile)));
  EXPECT_EQ(ContentOf(kStandbyFile), ContentOf(kBoardFile));
}

TEST_F(HeldThreadsTest, AFileThatIsNotPutInPlaceIsWaitedForASecondWithoutALine) {
  StartRecording();
  Announce({});
  const std::vector<fake::LogLine> undisturbed = fake::LogLines();
  const HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  Forget();
  EXPECT_EQ(TimeOfAnswer(""), kSecond);
  EXPECT_EQ(fake::LogLines(), undisturbed);
}

TEST_F(HeldThreadsTest, AnOlderFileThatComesLaterIsFollowedByTheNewestHistoryWithoutADriverCall) {
  StartRecording();
  HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  Announce({.extended = "newest"});
  Forget();
  thread.Finish();
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileClose", "ddal_devicetree_get_isti", "ApiGetModuleProductionCode"}),
              ElementsAre(fake::Call("AaFileClose", kBoardFile), fake::Call("AaFileOpen", kBoardFile, "w"),
                          fake::Call("AaFileClose", kBoardFile)));
  EXPECT_EQ(Newest(), "Warm reset : User (newest)");
}

TEST_F(HeldThreadsTest, AResetThatComesWhileTheNewestHistoryIsWrittenOnceMoreIsWrittenToo) {
  StartRecording();
  HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  Announce({.extended = "first"});
  constexpr unsigned kBeforeTheSecondFromThere = 2;
  thread.GoOnTo(kBeforeTheSecondFromThere);
  Announce({.extended = "second"});
  Forget();
  thread.Finish();
  EXPECT_EQ(fake::Calls("AaFileClose").size(), 2u) << "the older file, and one with the newest history";
  EXPECT_EQ(Newest(), "Warm reset : User (second)");
}

TEST_F(HeldThreadsTest, AnOlderFileThatCannotBeWrittenOnceMoreStaysAndCostsALine) {
  StartRecording();
  HeldThread thread(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  Announce({.extended = "newest"});
  Forget();
  fake::FailCall("AaFileOpen");
  thread.Finish();
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           std::string("BlackBoxData::createBlackboxFile(): failed to create file ") + kBoardFile));
  EXPECT_EQ(fake::OpenFiles(), 0u);
  EXPECT_NE(Newest(), "Warm reset : User (newest)");
}

TEST_F(HeldThreadsTest, AnOlderFileThatIsNotYetWrittenWholeIsFollowedByTheNewestHistory) {
  StartRecording(EUnitVersion_Pivoa, EUnitType_Pivo);
  HeldThread thread(WriteBoardFile, "ddal_psu_get_product_data", kBeforeTheFirst);
  EXPECT_EQ(TimeOfAnswer("newest"), 0u);
  Forget();
  thread.Finish();
  EXPECT_EQ(fake::Calls("AaFileClose").size(), 2u);
  EXPECT_EQ(fake::OpenFiles(), 0u);
  EXPECT_EQ(Newest(), "Warm reset : User (newest)");
}

TEST_F(HeldThreadsTest, ATraceFileThatIsNotWrittenToItsEndIsWaitedForASecond) {
  StartRecording();
  const HeldThread thread(WriteTrace, "AaFileWrite", kBeforeTheSecond);  // of a line, with the ring's semaphore
  EXPECT_EQ(TimeOfAnswer(""), kSecond);
  EXPECT_THAT(ContentOf(kTraceFile), HasSubstr("2024-06-15T12:00:00.000Z\t"));
}

TEST_F(HeldThreadsTest, SnapshotsTakeNoMoreMemoryWhileATraceFileIsNotWrittenToItsEnd) {
  StartRecording();
  for (std::size_t i = 0; i < kSnapshotRingSize; ++i) TheBlackBox().takeSnapshot();
  const HeldThread thread(WriteTrace, "AaFileWrite", kBeforeTheSecond);
  Forget();
  constexpr unsigned kSnapshots = 60;
  constexpr unsigned kBlocksPerLine = 2;  // the file's own lines stay until they are written
  const unsigned before = BlocksInUse();
  for (unsigned i = 0; i < kSnapshots; ++i) {
    TheBlackBox().takeSnapshot();
    Forget();
  }
  EXPECT_LE(BlocksInUse(), before + kSnapshots * kBlocksPerLine) << "no whole rings, which are several blocks each";
}

TEST_F(HeldThreadsTest, SeveralThreadsAreWaitedForASecondInAll) {
  StartRecording();
  const HeldThread trace(WriteTrace, "AaFileWrite", kBeforeTheSecond);
  const HeldThread board(WriteBoardFile, "AaFileClose", kBeforeTheFirst);
  EXPECT_EQ(TimeOfAnswer(""), kSecond);
}

TEST_F(HeldThreadsTest, TheOtherRequestsThatWriteFilesAreAnsweredToo) {
  StartRecording();
  const HeldThread thread(WriteTrace, "AaFileWrite", kBeforeTheSecond);
  AnswerTo({.id = 0x43A2, .payload = Words({1}), .sender = kRequester, .receiver = 0x010104D9}, 0x43A3);
  EXPECT_LE(fake::Now(), kSecond);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
