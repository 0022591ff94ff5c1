/// Board files that were damaged at random: what a start reads of them, tells of them and adds to them, next to a
/// model.
#include "NextStart.h"
#include "ResetHistoryModel.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

constexpr unsigned kSeed = 20240615;
constexpr unsigned kCases = 800;

const std::string kNoon = "2024-06-15T12:00:00.000Z ";

/// Entries as they are stored.
const std::string kEntries[] = {
    "2016-03-07T14:05:09.042Z Cold reset : User Runnig partition: /ffs/fs1 RLC: 0\n",
    "2016-03-07T14:05:09.042Z Cold reset : Network (two words) Runnig partition: /ffs/fs2 FALLBACK RLC: 7\n",
    "2016-03-07T14:05:09.042Z FPGA reconfiguration / Cold reset : User (why) Runnig partition: Invalid RLC: Error\n",
    "2016-03-07T14:05:09.042Z Software reset requested : SwActivation (it was requested) Runnig partition: Invalid\n",
    "2016-03-07T14:05:09.042Z Hardware failure reset requested : Recovery Runnig partition: /ffs/fs1 RLC: 3\n",
    "2016-03-07T14:05:09.042Z Warm reset : Commissioning change (" + std::string(58, 'x') + "yz) Runnig partition: \n",
    "2016-03-07T14:05:09.042Z Unknown reset reason : Unknown value (why) Runnig partition: Invalid RLC: 0\n",
    "2016-03-07T14:05:09.042Z PowerOn reset (probably same as previous cold reset) : User (two Runnig partition: \n",
    "2016-03-07T14:05:09.042Z Watchdog reset Runnig partition: /ffs/fs1 RLC: Not applicable\n",
    "0000-00-00T00:00:00.000Z Warm reset : Network (no clock) Runnig partition: /ffs/fs1 RLC: 0\n",
    "Cold reset : User without a time\n",
};
/// Texts that mean something to the reader, or are longer than its fields.
const std::string kTexts[] = {" : ",
                              ":",
                              "(",
                              ")",
                              ")(",
                              " ",
                              "\t",
                              "\n",
                              std::string(1, '\0'),
                              " requested",
                              "Unknown",
                              "SW VERSION:",
                              "\nRESET Reason and timestamp:\n",
                              "Cold reset",
                              "FPGA reconfiguration",
                              "0",
                              "-",
                              "2016",
                              std::string(39, 'c'),
                              std::string(40, 'c'),
                              std::string(60, 'e'),
                              std::string(89, 't'),
                              std::string(90, 't'),
                              std::string(1023, 'l'),
                              std::string(1100, 'l')};

/// Makes board files.
class Damage {
 public:
  explicit Damage(unsigned seed) : m_random(seed) {}

  std::string BoardFile() {
    std::string file = "TIMESTAMP: 2016-03-07T14:05:09.042Z\nRESET Reason and timestamp:\n";
    for (std::size_t lines = Below(13); lines > 0; --lines) file += Line();
    if (Below(8) != 0) file += "SW VERSION: active:\n";
    if (Below(8) == 0) Mutate(file);
    return file;
  }

 private:
  std::size_t Below(std::size_t bound) { return m_random() % bound; }

  std::string Line() {
    std::string line = kEntries[Below(std::size(kEntries))];
    for (std::size_t times = Below(4); times > 0; --times) Mutate(line);
    return line;
  }

  void Mutate(std::string& text) {
    const std::size_t at = Below(text.size() + 1);
    const std::size_t length = Below(30);
    switch (Below(7)) {
      case 0:  // a bit falls over
        if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << Below(8)));
        break;
      case 1:  // any byte, also zero
        if (at < text.size()) text[at] = static_cast<char>(Below(256));
        break;
      case 2:
        text.erase(at);
        break;
      case 3:
        text.erase(at, length);
        break;
      case 4: {
        const std::string part = text.substr(at, length);
        for (std::size_t times = Below(5); times > 0; --times) text.insert(at, part);
        break;
      }
      case 5:
        text.insert(at, kEntries[Below(std::size(kEntries))].substr(Below(30), length));
        break;
      default:
        text.insert(at, kTexts[Below(std::size(kTexts))]);
    }
  }

  std::mt19937 m_random;
};

/// Starts with the reset type that is the parameter.
class MutatedResetHistoryTest : public fake::PlatformTest, public testing::WithParamInterface<u32> {
 protected:
  MutatedResetHistoryTest() {
    NextStart first(m_board, 2);
    first.SetClock();
    const std::string entry = kNoon + "Watchdog reset";
    const std::string history = first.History();
    EXPECT_TRUE(history.starts_with(entry)) << history;
    m_bootState = history.substr(entry.size());  // with its line feed
  }

  /// Forgets what there was so far, so that a case costs as little as the one before.
  static void Forget() {
    fake::Clear();
    fake::ClearLog();
    fake::ClearSentMessages();
  }

  static void ExpectInBounds(const LastReset& last) {
    EXPECT_LE(last.category.size(), 39u);
    EXPECT_LE(last.extended.size(), 59u);
    EXPECT_EQ(last.extended.find_first_of("()"), std::string::npos) << last;
  }

  /// A start with a board file: its history, its answer, and the same once the clock is set.
  void ExpectAsInTheModel(const std::string& file) {
    fake::SetFile(kBoardFile, file);
    model::Entries entries = model::ReadBack(file);
    const std::string pending = model::Start(entries, GetParam());
    NextStart start(m_board, GetParam());
    ExpectInBounds(start.Last());
    EXPECT_EQ(start.Last(), model::Last(entries));

    if (!pending.empty()) entries.push_back(kNoon + pending + m_bootState);
    if (entries.size() > 10) entries.pop_front();
    start.SetClock();
    EXPECT_EQ(HistoryIn(kBoardFile), model::Text(entries));
    ExpectInBounds(start.Last());
    EXPECT_EQ(start.Last(), model::Last(entries));
    ExpectReadBack(entries);
  }

  /// The file that a start has written is read by the next one.
  void ExpectReadBack(const model::Entries& entries) {
    const model::Entries expected = model::ReadBack(*fake::FileContent(kBoardFile));
    EXPECT_LE(expected.size(), 10u);
    const bool whole = std::ranges::all_of(entries, [](const std::string& entry) {
      return entry.size() < 1024 && entry.ends_with('\n') && !model::Has(entry, "SW VERSION:");
    });
    if (whole) {
      EXPECT_EQ(expected, entries);
    }
    NextStart next(m_board);
    EXPECT_EQ(next.Last(), model::Last(expected));
    EXPECT_EQ(next.History(), model::Text(expected));
  }

  static std::string Named(unsigned number, const std::string& file) {
    std::ostringstream name;
    name << "seed " << kSeed << ", case " << number << ", file " << testing::PrintToString(file);
    return name.str();
  }

  BlackBoxBoard m_board;
  std::string m_bootState;
};

TEST_P(MutatedResetHistoryTest, IsReadToldAndContinuedAsInTheModel) {
  Damage damage(kSeed + GetParam());
  for (unsigned i = 0; i < kCases && !HasFailure(); ++i) {
    const std::string file = damage.BoardFile();
    SCOPED_TRACE(Named(i, file));
    ExpectAsInTheModel(file);
    Forget();
  }
}

TEST_P(MutatedResetHistoryTest, UndamagedEntriesAreToo) {
  for (const std::string& entry : kEntries) {
    for (unsigned lines = 1; lines <= 11; ++lines) {
      std::string file = "RESET Reason and timestamp:\n";
      for (unsigned i = 0; i < lines; ++i) file += entry;
      SCOPED_TRACE(file);
      ExpectAsInTheModel(file + "SW VERSION: active:\n");
      Forget();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(ResetType, MutatedResetHistoryTest, testing::Values(0u, 5u, 7u));

}  // namespace
}  // namespace ps::hwapi::common::climate
