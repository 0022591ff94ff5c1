/// @file
/// A later start of the board, on the flash that the one before left.
#pragma once

#include "AaTrbl.h"
#include "BlackBoxTest.h"

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// The newest entry taken apart.
struct LastReset {
  std::string category;
  std::string extended;

  bool operator==(const LastReset&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const LastReset& last) {
    return out << '"' << last.category << "\", \"" << last.extended << '"';
  }
};

/// @return the entries in a board file on a flash without software, one after the other; "(no history)" when that is
///         not all there
inline std::string HistoryIn(const std::string& path) {
  const std::string header = "RESET Reason and timestamp:\n";
  const std::string file = fake::FileContent(path).value_or("");
  const std::size_t begin = file.find(header);
  const std::size_t end = file.rfind("SW VERSION: active:");  // whatever the entries hold
  if (begin == std::string::npos || end == std::string::npos || end < begin) return "(no history)";
  return file.substr(begin + header.size(), end - begin - header.size());
}

/// The black box after a start.
class NextStart {
 public:
  /// @param resetType how the board was reset; 1: in a way that the history passes over
  explicit NextStart(BlackBoxBoard& board, u32 resetType = 1) {
    for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
    board.SetResetType(resetType);
    EXPECT_EQ(m_blackBox.init(EUnitType_Kel), 1u);
  }

  /// The clock is set.
  void SetClock() { m_blackBox.writeResetReasonToBlackbox(); }

  /// @return all entries, one after the other
  std::string History() {
    EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
    return HistoryIn(kBoardFile);
  }

  /// @return why the board was last reset; buffers are no longer than they must be
  LastReset Last() const {
    std::vector<char> category(40, '#');
    std::vector<char> extended(60, '#');
    m_blackBox.ResetStateInfo(category.data(), extended.data());
    return {TextIn(category), TextIn(extended)};
  }

 private:
  static std::string TextIn(const std::vector<char>& buffer) {
    const std::size_t length = strnlen(buffer.data(), buffer.size());
    EXPECT_LT(length, buffer.size()) << "no terminating zero";
    return {buffer.data(), length};
  }

  BlackBoxData m_blackBox;
};

}  // namespace ps::hwapi::common::climate
