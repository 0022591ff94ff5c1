/// Plug-in units that come, go and are swapped while the black box takes snapshots and writes its files, in real
/// threads. What the units leave is compared with a plain model of them; the rest holds whatever the order was.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

using Names = std::set<std::string>;

constexpr u32 kTempRequest = 0x2B29;
constexpr u32 kTempPoll = 0x203F;
constexpr u32 kTempIndication = 0x2B2B;
constexpr u32 kUnitIndication = 0x0BBE;
constexpr u32 kStoreData = 0x43A2;
constexpr u32 kUnPlugged = 2;

/// Sensors that the board has without any unit, and its fans.
const Names kBoardNames = {"KEL",        "KEL_ENV", "KEL_INTAKE", "KEL_MCU",  "KEL_OCXO",
                           "KEL_VORNIK", "TOV",     "TOV_MCU",    "GAR_FAN1", "GAR_FAN2"};

/// @return names of the sensors of a unit with that field in its hw_sw_id
Names NamesOf(u32 slot, u32 field) {
  const std::string unit = "DAX" + std::to_string(slot + 1);
  const bool m = field == 0x0C;
  const bool p = slot != 0 && (field == 0x11 || field == 0x16);
  Names names = {unit + "_MCU"};
  for (int dsp = 1; dsp <= (m ? 9 : 6); ++dsp) names.insert(unit + "_DSP" + std::to_string(dsp));
  if (m || p) names.insert(unit + "_VORNIK");
  return names;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

/// @return names in the last line of a trace file's head, without the mark
Names ColumnsIn(const std::string& head) {
  const std::vector<std::string> lines = Split(head, '\n');
  if (lines.size() < 7) return {};
  std::vector<std::string> columns = Split(lines[6], '\t');
  return {columns.begin() + 1, columns.end()};
}

/// The one service of the process on a control board.
class KelDaxStressTest : public ServiceOnBoardTest {
 protected:
  static constexpr int kRounds = 400;

  KelDaxStressTest() {
    fake::Unit().version = EUnitVersion_Kela;
    fake::SetTag("app.hwapi.online.4b3", 6u);
    fake::SetRad(0x200B5, 1);
    for (const u32 board : {2u, 3u, 4u}) {
      for (u32 index = 0; index <= 10; ++index) fake::SetTemperature(board << 16 | index, 40000);
    }
    fake::ServeTask(0x4B6);
    Service::Get().Init();
    Refusal(Request(kTempRequest, {0, 4, 4'000'000, 0, 0}));
    Forget();
  }

  static fake::Message Request(u32 id, std::vector<u32> words) {
    if (id == kUnitIndication) words.resize(21);
    return {.id = id, .payload = Words(words), .sender = kRequester};
  }

  /// Tells the service of a unit, and notes what then has to be measured and recorded.
  void Indicate(u32 slot, u32 field, u32 state) {
    EXPECT_EQ(Refusal(Request(kUnitIndication, {state, 0x12 + slot, 0, field << 12})), "");
    const Names names = NamesOf(slot, field);
    if (state == kUnPlugged) {
      for (const std::string& name : names) m_recorded.erase(name);
      m_counts[slot] = 0;
    } else {
      m_recorded.insert(names.begin(), names.end());
      m_counts[slot] = static_cast<u32>(names.size());
    }
  }
  void ExpectPollsToFollow() const {
    fake::ClearSentMessages();
    for (const u32 sensorType : {1u, 2u, 3u, 4u}) EXPECT_EQ(Refusal(Request(kTempPoll, {sensorType})), "");
    std::vector<u32> counts;
    for (const fake::Message& indication : fake::SentMessages(kTempIndication)) {
      counts.push_back(WordAt(indication, 4));
    }
    EXPECT_EQ(counts,
              (std::vector<u32>{m_counts[0], m_counts[1], m_counts[2], m_counts[0] + m_counts[1] + m_counts[2]}));
  }

  /// What the service thread does: the test's own thread is the one that serves the endpoints.
  void Serve() {
    std::minstd_rand random(1);
    constexpr std::array kFields = {0x0Cu, 0x11u, 0x16u, 0x10u};
    constexpr std::array kStates = {0u, kUnPlugged, 7u, kUnPlugged, 4u, 8u};
    for (int round = 0; round < kRounds; ++round) {
      const auto slot = static_cast<u32>(random() % 3);
      const u32 field = kFields[random() % kFields.size()];
      Indicate(slot, field, kStates[random() % kStates.size()]);
      ExpectPollsToFollow();
      if (round % 7 == 0) Refusal(Request(kStoreData, {1}));
      fake::DispatchQueued();
    }
  }

  static void Snap() { EXPECT_EQ(fake::RunThread("BlackBoxData", kRounds, 1), fake::ThreadEnd::Sleeping); }
  static void WriteEveryHour() {
    EXPECT_EQ(fake::RunThread("BlackBoxData", kRounds / 4, 2), fake::ThreadEnd::Sleeping);
  }
  /// Collects the technical log; each time the trace is missing before.
  static void Collect() {
    for (int round = 0; round < kRounds / 4; ++round) {
      fake::RemoveAll(kTraceFile);
      for (const fake::TrblFile& file : fake::TrblFiles()) file.prepare(file.name.c_str(), file.context);
    }
  }

  void RunAll() {
    std::vector<std::thread> threads;
    for (void (*work)() : {Snap, WriteEveryHour, Collect}) threads.emplace_back(work);
    Serve();
    for (std::thread& thread : threads) thread.join();
  }

  /// @return everything that was written to the trace file, a write each
  static std::vector<std::string> TraceWrites() {
    std::vector<std::string> texts;
    for (const fake::Call& write : fake::Calls("AaFileWrite")) {
      if (write.arguments.at(1) != fake::Value(kTraceFile)) continue;
      const fake::Bytes& bytes = write.arguments.at(0).Buffer();
      texts.emplace_back(bytes.begin(), bytes.end());
    }
    return texts;
  }

  BlackBoxBoard m_board;
  Names m_recorded;               ///< names that the black box has to have of units
  std::array<u32, 3> m_counts{};  ///< sensors that each slot has to have
};

TEST_F(KelDaxStressTest, ColumnsAreThoseOfTheUnitsThatCameAndStayed) {
  RunAll();
  Refusal(Request(kStoreData, {1}));
  Names expected = kBoardNames;
  expected.insert(m_recorded.begin(), m_recorded.end());
  EXPECT_EQ(ColumnsIn(fake::FileContent(kTraceFile).value_or("")), expected);
}

TEST_F(KelDaxStressTest, EveryHeadThatWasWrittenFitsTogether) {
  RunAll();
  std::size_t heads = 0;
  for (const std::string& text : TraceWrites()) {
    if (!text.starts_with("#MINMAX")) continue;
    ++heads;
    const std::vector<std::string> lines = Split(text, '\n');
    ASSERT_EQ(lines.size(), 7u) << text;
    const std::string names = lines[1].substr(1);
    for (const std::size_t extremes : {std::size_t{2}, std::size_t{3}}) {
      EXPECT_EQ(std::count(lines[extremes].begin(), lines[extremes].end(), '\t'),
                std::count(names.begin(), names.end(), '\t'))
          << text;
    }
    EXPECT_EQ(lines[6], "#                  " + names + "GAR_FAN1\tGAR_FAN2\t");
  }
  EXPECT_GT(heads, 50u);
}

TEST_F(KelDaxStressTest, EveryRowThatWasWrittenHasAColumnForEachSensorThatWasThere) {
  RunAll();
  std::size_t rows = 0;
  for (const std::string& text : TraceWrites()) {
    if (text.starts_with("#MINMAX")) continue;
    ++rows;
    const auto columns = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\t')) - 1;
    EXPECT_GE(columns, kBoardNames.size()) << text;
    EXPECT_LE(columns, kBoardNames.size() + 33) << text;
    EXPECT_EQ(text.back(), '\n');
  }
  EXPECT_GT(rows, 50u);
}

TEST_F(KelDaxStressTest, EveryReadingHasItsPlaceInTheBlackBox) {
  RunAll();
  EXPECT_THAT(fake::LogTexts(EAaSysLogSeverityLevel_Error),
              Each(AllOf(Not(HasSubstr("sensor")), Not(HasSubstr("out of memory")))));
  EXPECT_EQ(fake::OpenFiles(), 0u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
