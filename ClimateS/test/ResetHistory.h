/// @file
/// The fixture of tests of the reset history.
#pragma once

#include "AdditionalResetInfo.h"
#include "BlackBoxTest.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// A black box without any reset in its history, and a clock that shows 14:05:09.
class ResetHistoryTest : public BlackBoxTest {
 protected:
  static inline const std::string kHeader = "RESET Reason and timestamp:\n";
  static inline const std::string kEnd = "SW VERSION: active: R1_2.3\n";
  /// The clock, as it stands before an entry.
  static inline const std::string kNow = "2016-03-07T14:05:09.042Z ";
  /// An earlier time.
  static inline const std::string kEarlier = "2015-12-31T23:59:58.999Z ";

  explicit ResetHistoryTest(BlackBoxData* blackBox = nullptr) : BlackBoxTest(blackBox) {
    fake::SetUtc({.year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42});
    Init();
  }

  void TearDown() override {
    EXPECT_EQ(fake::OpenFiles(), 0u);
    BlackBoxTest::TearDown();
  }

  /// Puts entries into the history, as those of an earlier life, and forgets what that did.
  void Remember(const std::vector<std::string>& entries) {
    std::string file = kHeader;
    for (const std::string& entry : entries) file += entry;
    fake::SetFile(kBoardFile, file + kEnd);
    m_blackBox.readResetReasonsFromFile();
    Forget();
  }

  /// Lets the reset service tell a type, asks it, and forgets what that did.
  void Start(u32 resetType) {
    m_board.SetResetType(resetType);
    m_blackBox.checkResetType();
    Forget();
  }

  /// @return the entries with their line ends, as a new board file shows them
  std::vector<std::string> History() {
    EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
    const std::string file = File(kBoardFile);
    const std::size_t begin = file.find("\n" + kHeader) + 1 + kHeader.size();
    const std::size_t end = file.find("SW VERSION: active:", begin);
    EXPECT_NE(end, std::string::npos) << file;
    return LinesOf(file.substr(begin, end - begin));
  }

  /// @return the boot state as an entry of this moment has it
  static std::string BootState() { return AdditionalResetInfo().getAdditionalResetInfoString(); }

  /// @return a log line of the service, as the call that it is
  static fake::Call Logging(EAaSysLogSeverityLevel level, const std::string& text) {
    return {"AaSysLogPrintE", level, 131143, text};
  }

 private:
  static std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
      lines.push_back(text.substr(begin, end - begin));
      begin = end;
    }
    return lines;
  }
};

/// @return so many different entries, the oldest first
inline std::vector<std::string> NumberedEntries(int count) {
  std::vector<std::string> entries;
  for (int i = 1; i <= count; ++i) entries.push_back("2015-01-01T00:00:00.000Z reset " + std::to_string(i) + "\n");
  return entries;
}

}  // namespace ps::hwapi::common::climate
