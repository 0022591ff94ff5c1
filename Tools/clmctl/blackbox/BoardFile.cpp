#include "BoardFile.h"

#include "Arguments.h"

namespace clmctl {
namespace {

constexpr std::string_view kHistoryHeading = "RESET Reason and timestamp:";
constexpr std::string_view kPsuHeading = "PSU DATA";
constexpr std::string_view kFilterHeading = "FILTER DATA";

using enum BoardSection;

constexpr BoardLabel kLabels[] = {
    {.section = Board, .label = "TIMESTAMP", .title = "Written", .key = "written", .number = false},
    {.section = Board, .label = "PRODUCT CODE", .title = "Product code", .key = "product_code", .number = false},
    {.section = Board, .label = "SERIAL NUMBER", .title = "Serial number", .key = "serial_number", .number = false},
    {.section = Board, .label = "ISTI", .title = "ISTI", .key = "isti", .number = true},
    {.section = Board, .label = "RESET COUNTER", .title = "Reset counter", .key = "reset_counter", .number = true},
    {.section = Board,
     .label = "SW VERSION: active",
     .title = "Active software",
     .key = "active_software",
     .number = false},
    {.section = Board,
     .label = "SW VERSION: passive",
     .title = "Passive software",
     .key = "passive_software",
     .number = false},
    {.section = Board,
     .label = "SW VERSION: active filesystem",
     .title = "Active file system",
     .key = "active_file_system",
     .number = false},
    {.section = Board,
     .label = "ERRORS: ECC single-bit error counter",
     .title = "ECC single-bit errors",
     .key = "ecc_single_bit_errors",
     .number = true},
    {.section = Board,
     .label = "ERRORS: ECC double-bit error counter",
     .title = "ECC double-bit errors",
     .key = "ecc_double_bit_errors",
     .number = true},
    {.section = Psu, .label = "PRODUCT CODE", .title = "Product code", .key = "product_code", .number = false},
    {.section = Psu, .label = "VENDOR", .title = "Vendor", .key = "vendor", .number = false},
    {.section = Psu, .label = "SERIAL NUMBER", .title = "Serial number", .key = "serial_number", .number = false},
    {.section = Psu, .label = "HWSWID", .title = "HWSWID", .key = "hwswid", .number = false},
    {.section = Filter, .label = "PRODUCT CODE", .title = "Product code", .key = "product_code", .number = false},
    {.section = Filter, .label = "VENDOR", .title = "Vendor", .key = "vendor", .number = false},
    {.section = Filter, .label = "HW VERSION", .title = "Hardware version", .key = "hardware_version", .number = false},
    {.section = Filter, .label = "SERIAL NUMBER", .title = "Serial number", .key = "serial_number", .number = false},
    {.section = Filter, .label = "HWSWID", .title = "HWSWID", .key = "hwswid", .number = true},
};
/// The history stands between these two.
constexpr std::size_t kLastBeforeHistory = 4, kFirstBehindHistory = 5;

bool HasLabel(std::string_view line, std::string_view label) {
  if (!line.starts_with(label)) return false;
  const std::string_view rest = line.substr(label.size());
  return rest == ":" || rest.starts_with(": ");
}

class BoardParser {
 public:
  explicit BoardParser(std::string_view text) : m_source(text) {
    for (const BoardLabel& label : kLabels) m_board.values.push_back({.label = &label, .present = false, .value = {}});
  }

  BoardFile Parse() {
    for (m_line = 0; m_line < m_source.lines.size(); ++m_line) ParseLine(m_source.lines[m_line]);
    if (m_source.cut) m_board.problems.push_back({m_line, "is cut off: it has no line end"});
    Enter(m_section, LabelsUpTo(m_board.hasProductData ? Filter : Board));
    if (!m_historyFound) Problem("the file has no '" + std::string(kHistoryHeading) + "' line");
    return std::move(m_board);
  }

 private:
  void Problem(std::string text) { m_board.problems.push_back({m_line + 1, std::move(text)}); }

  static std::size_t LabelsUpTo(BoardSection section) {
    std::size_t count = 0;
    while (count < std::size(kLabels) && kLabels[count].section <= section) ++count;
    return count;
  }

  /// Goes on to a section's line; those that were expected before it are missing.
  void Enter(BoardSection section, std::size_t label) {
    for (; m_next < label; ++m_next) {
      if (!m_board.values[m_next].present) Problem("'" + std::string(kLabels[m_next].label) + "' is missing before it");
    }
    m_section = section;
  }

  void ParseLine(std::string_view line) {
    if (m_inHistory && !HasLabel(line, kLabels[kFirstBehindHistory].label)) {
      m_board.resets.push_back(ParseResetRecord(line));
      if (m_board.resets.back().damaged) Problem("is no entry of the history of resets: " + Quoted(line));
      return;
    }
    m_inHistory = false;
    if (line == kHistoryHeading && !m_historyFound) {
      Enter(Board, kLastBeforeHistory + 1);
      m_historyFound = m_inHistory = true;
    } else if (line == kPsuHeading && m_section == Board) {
      StartSection(Psu);
    } else if (line == kFilterHeading && m_section != Filter) {
      StartSection(Filter);
    } else if (!line.empty()) {
      ParseValue(line);
    } else if (!NextIsHeading()) {
      Problem("is empty");
    }
  }

  void StartSection(BoardSection section) {
    m_board.hasProductData = true;
    Enter(section, LabelsUpTo(static_cast<BoardSection>(static_cast<int>(section) - 1)));
  }

  bool NextIsHeading() const {
    const std::string_view next = m_line + 1 < m_source.lines.size() ? m_source.lines[m_line + 1] : "";
    return next == kPsuHeading || next == kFilterHeading;
  }

  void ParseValue(std::string_view line) {
    for (std::size_t i = 0; i < std::size(kLabels); ++i) {
      if (kLabels[i].section != m_section || !HasLabel(line, kLabels[i].label)) continue;
      if (m_board.values[i].present) return Problem("stands there twice: " + Quoted(line));
      if (i < m_next) {
        Problem("stands in the wrong place: " + Quoted(line));
      } else {
        Enter(m_section, i);
        m_next = i + 1;
      }
      return SetValue(i, line.substr(kLabels[i].label.size() + 1));
    }
    Problem("is no line of a board file: " + Quoted(line));
  }

  void SetValue(std::size_t index, std::string_view rest) {
    BoardValue& value = m_board.values[index];
    value.present = true;
    if (rest.empty()) return;
    value.value = std::string(rest.substr(1));
    if (value.label->number && !commandline::SignedFrom(*value.value)) {
      Problem("'" + std::string(value.label->label) + "' is no number: " + Quoted(*value.value));
    }
  }

  FileLines m_source;
  BoardFile m_board;
  std::size_t m_line = 0;
  std::size_t m_next = 0;  ///< the label that should come now
  BoardSection m_section = Board;
  bool m_inHistory = false;
  bool m_historyFound = false;
};

}  // namespace

BoardFile ParseBoardFile(std::string_view text) { return BoardParser(text).Parse(); }

}  // namespace clmctl
