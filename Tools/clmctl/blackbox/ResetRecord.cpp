#include "ResetRecord.h"

#include "Arguments.h"
#include "FileLines.h"
#include "ResetNames.h"
#include "UtcTime.h"

namespace clmctl {
namespace {

// "Runnig" is how the service writes it.
constexpr std::string_view kPartitionMark = " Runnig partition: ";
constexpr std::string_view kCounterMark = " RLC: ";
constexpr std::string_view kFallbackMark = " FALLBACK";
constexpr std::string_view kCategoryMark = " : ";
constexpr std::string_view kUnknownValue = "Unknown value";

/// @return the category that @p text begins with: a known one, else its first word
std::string_view CategoryIn(std::string_view text) {
  std::string_view category = text.substr(0, text.find(' '));
  const auto consider = [&](std::string_view known) {
    if (!text.starts_with(known) || known.size() <= category.size()) return;
    const std::string_view rest = text.substr(known.size());
    if (rest.empty() || rest.front() == ' ') category = known;
  };
  for (const ResetName& row : ResetCategories()) consider(row.historyText);
  consider(kUnknownValue);
  return category;
}

void ParseReason(std::string_view text, ResetRecord& record) {
  const std::size_t mark = text.find(kCategoryMark);
  record.reason = text.substr(0, mark);
  if (mark == std::string_view::npos) return;
  text.remove_prefix(mark + kCategoryMark.size());
  const std::string_view category = CategoryIn(text);
  record.category = category;
  text.remove_prefix(category.size());
  if (text.starts_with(' ')) text.remove_prefix(1);
  const bool enclosed = text.size() >= 2 && text.front() == '(' && text.back() == ')';
  record.extendedInfo = enclosed ? text.substr(1, text.size() - 2) : text;
}

/// @return whether the boot state was there
bool ParseBootState(std::string_view text, ResetRecord& record) {
  const std::size_t mark = text.find(kCounterMark);
  if (mark == std::string_view::npos) return false;
  record.counter = text.substr(mark + kCounterMark.size());
  text = text.substr(0, mark);
  record.fallback = text.ends_with(kFallbackMark);
  if (record.fallback) text.remove_suffix(kFallbackMark.size());
  record.partition = text;
  return true;
}

}  // namespace

std::optional<i32> ResetRecord::CounterValue() const { return commandline::SignedFrom(counter); }

ResetRecord ParseResetRecord(std::string_view text) {
  ResetRecord record;
  record.text = text;
  const std::string_view time = text.substr(0, kUtcTimeLength);
  const std::string_view rest = text.substr(time.size());
  // Extended information may contain anything: the boot state is what stands last.
  const std::size_t mark = rest.rfind(kPartitionMark);
  if (!LooksLikeUtcTime(time) || !rest.starts_with(' ') || mark == std::string_view::npos || mark == 0 ||
      !ParseBootState(rest.substr(mark + kPartitionMark.size()), record)) {
    record = {};
    record.text = text;
    record.damaged = true;
    return record;
  }
  record.time = time;
  ParseReason(rest.substr(1, mark - 1), record);
  return record;
}

}  // namespace clmctl
