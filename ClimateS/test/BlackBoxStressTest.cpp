/// Everything at once, in real threads: the service, the threads of the black box, and those of the platform. The work
/// is counted, not timed; what must hold at the end holds whatever the order was.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

const std::string kLinkTag = "sys.hwapi.bootimage.link.created";
const std::string kNtpThread = "BlackBoxDataNtp";
const std::string kStandbyDirectory = "/ffs/stb/config/lifedata/";

constexpr u32 kFirstDax = 0x12;
constexpr u32 kReady = 0;
constexpr u32 kUnplugged = 2;

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

/// @return the entries of the reset history in a board file
std::vector<std::string> HistoryIn(const std::string& boardFile) {
  std::vector<std::string> lines = LinesOf(boardFile);
  const auto header = std::find(lines.begin(), lines.end(), "RESET Reason and timestamp:");
  EXPECT_NE(header, lines.end()) << boardFile;
  const auto end = std::find_if(header, lines.end(), [](const std::string& line) { return line.starts_with("SW "); });
  EXPECT_NE(end, lines.end()) << boardFile;
  return header == lines.end() ? lines : std::vector<std::string>(header + 1, end);
}

/// @return the number in "(number N)"; -1 when there is none
int NumberIn(const std::string& entry) {
  std::smatch match;
  return std::regex_search(entry, match, std::regex("\\(number (\\d+)\\)")) ? std::stoi(match[1]) : -1;
}

/// The one service of the process, with a board that has everything, and a watchdog reset to tell of.
class BlackBoxStressTest : public ServiceOnBoardTest {
 protected:
  static constexpr int kRounds = 300;

  BlackBoxStressTest() {
    m_board.SetResetType(2);
    fake::Unit().version = EUnitVersion_Kela;
    fake::MakeDir(kStandbyDirectory);
    fake::SetFile(kOamAlarmsFile, "alarms\n");
    fake::SetFile("/tmp/report", "report\n");
    fake::SetTag("app.hwapi.online.4b3", 6u);
    fake::SetRad(0x200B5, 1);
    for (const u32 fan : {0u, 1u}) fake::SetFan(fan, {.rpm = 3000});
    fake::ServeTask(0x4B6);
    Service::Get().Init();
    Refusal({.id = 0x2B29, .payload = Words({0, 7, 4'000'000, 0, 0}), .sender = kRequester});
    Forget();
  }

  static fake::Message Request(u32 id, const std::vector<u32>& words) {
    return {.id = id, .payload = Words(words), .sender = kRequester};
  }
  static fake::Message ResetRequest(int number) {
    fake::Message request = Request(0x1134, {1, 1, 1, 4, 1});
    const std::string text = "number " + std::to_string(number);
    request.payload.insert(request.payload.end(), text.begin(), text.end());
    request.payload.resize(84);
    return request;
  }
  static fake::Message StoreFile(int number) {
    fake::Message request = Request(0x1302, {1, 2});
    const std::string source = "/tmp/report", target = "key" + std::to_string(number % 2);
    request.payload.resize(264);
    std::copy(source.begin(), source.end(), request.payload.begin() + 8);
    std::copy(target.begin(), target.end(), request.payload.begin() + 136);
    return request;
  }

  /// What the service thread does: the test's own thread is the one that serves the endpoints.
  static void Serve() {
    for (int round = 0; round < kRounds; ++round) {
      fake::SetTemperature(0x10005, 40000 + round);
      Refusal(Request(0x203F, {6}));
      Refusal(Request(0x203F, {7}));
      Refusal(Request(0x2C78, {7, kOtherClient}));
      const u32 state = round % 2 == 0 ? kReady : kUnplugged;
      Refusal(Request(0x0BBE, {state, kFirstDax, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
      if (round % 4 == 0) Refusal(ResetRequest(round / 4));
      if (round % 5 == 0) Refusal(StoreFile(round));
      if (round % 7 == 0) Refusal(Request(0x43A2, {1}));
      if (round % 9 == 0) Refusal(Request(0x1177, {1, 1, 1}));
      fake::DispatchQueued();
    }
  }

  /// Collects the technical log; each time something is missing before.
  static void Collect() {
    for (int round = 0; round < kRounds / 2; ++round) {
      fake::RemoveAll(round % 2 == 0 ? kBoardFile : kTraceFile);
      for (const fake::TrblFile& file : fake::TrblFiles()) file.prepare(file.name.c_str(), file.context);
    }
  }

  static void MakeLinks() {
    for (u32 round = 0; round < kRounds / 4; ++round) fake::SetTag(kLinkTag, round % 2);
  }

  static void Snap() { EXPECT_EQ(fake::RunThread("BlackBoxData", 2 * kRounds, 1), fake::ThreadEnd::Sleeping); }
  static void WriteEveryHour() {
    EXPECT_EQ(fake::RunThread("BlackBoxData", kRounds / 4, 2), fake::ThreadEnd::Sleeping);
  }
  static void StoreStartReason() { EXPECT_EQ(fake::RunThread(kNtpThread), fake::ThreadEnd::Returned); }

  static void RunAll() {
    std::vector<std::thread> threads;
    for (void (*work)() : {Collect, MakeLinks, Snap, WriteEveryHour, StoreStartReason}) threads.emplace_back(work);
    Serve();
    for (std::thread& thread : threads) thread.join();
  }

  static std::string BoardFile() { return fake::FileContent(kBoardFile).value_or("(no file)"); }

  BlackBoxBoard m_board;
};

TEST_F(BlackBoxStressTest, EveryResetIsInTheHistoryOnceAndInOrder) {
  RunAll();
  int newest = -1;
  for (const fake::Call& write : fake::Calls("AaFileWrite")) {
    if (write.arguments.at(1) != fake::Value(kBoardFile)) continue;
    const fake::Bytes& bytes = write.arguments.at(0).Buffer();
    int previous = -1;
    for (const std::string& entry : HistoryIn(std::string(bytes.begin(), bytes.end()))) {
      const int number = NumberIn(entry);
      if (number < 0) continue;  // the watchdog reset
      EXPECT_TRUE(previous < 0 || number == previous + 1) << number << " behind " << previous;
      previous = number;
    }
    newest = std::max(newest, previous);
  }
  EXPECT_EQ(newest, (kRounds - 1) / 4);
}

TEST_F(BlackBoxStressTest, TheReasonOfTheStartIsStoredOnce) {
  RunAll();
  std::size_t most = 0;
  for (const fake::Call& write : fake::Calls("AaFileWrite")) {
    if (write.arguments.at(1) != fake::Value(kBoardFile)) continue;
    const fake::Bytes& bytes = write.arguments.at(0).Buffer();
    const std::vector<std::string> history = HistoryIn(std::string(bytes.begin(), bytes.end()));
    most = std::max(most, static_cast<std::size_t>(std::count_if(history.begin(), history.end(), [](const auto& entry) {
                      return entry.find("Watchdog reset") != std::string::npos;
                    })));
    EXPECT_LE(history.size(), 10u);
  }
  EXPECT_EQ(most, 1u);
}

TEST_F(BlackBoxStressTest, TheBoardFileHoldsTheNewestHistory) {
  RunAll();
  const std::vector<std::string> history = HistoryIn(BoardFile());
  ASSERT_EQ(history.size(), 10u);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(NumberIn(history[static_cast<std::size_t>(i)]), (kRounds - 1) / 4 - 9 + i);
}

TEST_F(BlackBoxStressTest, TheTraceHasAtMost180WholeLines) {
  RunAll();
  Refusal(Request(0x43A2, {1}));
  std::vector<std::string> lines = LinesOf(fake::FileContent(kTraceFile).value_or(""));
  ASSERT_GT(lines.size(), 7u);
  lines.erase(lines.begin(), lines.begin() + 7);
  EXPECT_EQ(lines.size(), 180u);
  // Eight sensors of the board, seven of the plug-in unit, two fans.
  const std::regex whole("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\t((\\d+|error)\t){10,17}");
  for (const std::string& line : lines) EXPECT_TRUE(std::regex_match(line, whole)) << line;
}

TEST_F(BlackBoxStressTest, EveryTraceFileThatWasWrittenIsWhole) {
  RunAll();
  const std::vector<std::string> lines = LinesOf(fake::FileContent(kTraceFile).value_or(""));
  ASSERT_GT(lines.size(), 7u);
  EXPECT_EQ(lines[0], "#MINMAX: Minimum and maximum measured temperatures");
  EXPECT_EQ(lines[5], "#TEMPANDSPEED: temperatures and fan speeds");
  for (std::size_t i = 7; i < lines.size(); ++i) EXPECT_TRUE(lines[i].starts_with("20")) << lines[i];
}

TEST_F(BlackBoxStressTest, TheExtremesOfASensorAreExact) {
  RunAll();
  Refusal(Request(0x43A2, {1}));
  const std::vector<std::string> lines = LinesOf(fake::FileContent(kTraceFile).value_or(""));
  ASSERT_GT(lines.size(), 3u);
  EXPECT_NE(lines[2].find("\t40000\t"), std::string::npos) << lines[2];
  EXPECT_NE(lines[3].find("\t" + std::to_string(40000 + kRounds - 1) + "\t"), std::string::npos) << lines[3];
}

TEST_F(BlackBoxStressTest, ThreeCopiesOfEachKeyAreKeptAndRegistered) {
  RunAll();
  EXPECT_LE(fake::TrblFiles().size(), 4u + 2 * 3);
  for (const fake::TrblFile& file : fake::TrblFiles()) {
    if (file.name.find("key") == std::string::npos) continue;
    EXPECT_EQ(fake::FileContent(file.path), "report\n") << file.path;
  }
}

TEST_F(BlackBoxStressTest, NothingIsLeftOpenAndNothingRanOutOfMemory) {
  RunAll();
  EXPECT_EQ(fake::OpenFiles(), 0u);
  for (const std::string& line : fake::LogTexts(EAaSysLogSeverityLevel_Error)) {
    EXPECT_EQ(line.find("out of memory"), std::string::npos);
    EXPECT_EQ(line.find("not found"), std::string::npos) << line;
  }
}

/// The clock becomes valid in the very moment of a reset request: both want to store the reason of the start.
class ClockAndResetTest : public BlackBoxStressTest {
 protected:
  static constexpr unsigned kMoments = 200;

  static void SetYear(u32 year) {
    fake::SetUtc({.year = year, .month = 1, .day = 1, .hour = 0, .minute = 0, .second = 0, .millisec = 0});
  }

  /// The thread that waits for the clock; when it was too early for that, it wakes again once the clock is set.
  static void WaitForTheClock(unsigned moment, std::latch& clockIsSet) {
    constexpr unsigned kSleeps = 3;
    if (fake::RunThread(kNtpThread, kSleeps, moment + 1) == fake::ThreadEnd::Returned) return;
    clockIsSet.wait();
    EXPECT_EQ(fake::RunThread(kNtpThread, 0, moment + 1), fake::ThreadEnd::Returned);
  }

  /// The reset is answered, so the board may go down: its entry must be where the next start looks, whatever other
  /// threads are just writing.
  static void ExpectOnBothFileSystems(unsigned moment) {
    for (const std::string& file :
         {BoardFile(), fake::FileContent(kStandbyDirectory + "blackbox").value_or("(no file)")}) {
      const std::vector<std::string> history = HistoryIn(file);
      EXPECT_EQ(NumberIn(history.empty() ? "" : history.back()), static_cast<int>(moment)) << file;
    }
  }

  /// @return the history after the moment number @p moment
  static std::vector<std::string> HistoryAfter(unsigned moment) {
    SetYear(2000);
    if (moment != 0) BlackBoxData::getInstance()->startWaitingForNTPTime(2);
    std::latch together(2), clockIsSet(1);
    std::thread clock([&] {
      together.arrive_and_wait();
      WaitForTheClock(moment, clockIsSet);
    });
    together.arrive_and_wait();
    SetYear(2024);
    clockIsSet.count_down();
    Refusal(ResetRequest(static_cast<int>(moment)));
    ExpectOnBothFileSystems(moment);
    clock.join();
    Forget();
    return HistoryIn(BoardFile());
  }
};

TEST_F(ClockAndResetTest, TheReasonOfTheStartIsStoredOnceBeforeTheReset) {
  unsigned entries = 0;
  for (unsigned moment = 0; moment < kMoments; ++moment) {
    const std::vector<std::string> history = HistoryAfter(moment);
    entries = std::min(entries + 2, 10u);
    ASSERT_EQ(history.size(), entries);
    for (unsigned i = 0; i < entries; i += 2) {
      EXPECT_NE(history[i].find("Z Watchdog reset "), std::string::npos) << history[i];
      EXPECT_EQ(NumberIn(history[i + 1]), static_cast<int>(moment - (entries - 2 - i) / 2)) << history[i + 1];
    }
  }
}

}  // namespace
}  // namespace ps::hwapi::common::climate
