/// The history of resets: read back, added to, taken apart.
#include "AdditionalResetInfo.h"
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Log.h"
#include "ResetEntry.h"
#include "UtcText.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ps::hwapi::common::climate {
namespace {

constexpr char kHistoryHeader[] = "RESET Reason and timestamp:";
constexpr const char* kEndOfHistory = "SW VERSION:";
constexpr const char* kRequested = " requested";
constexpr const char* kUnknown = "Unknown";
constexpr u32 kLineSize = 1024;

bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

/// Reads the lines behind the header, as far as they belong to the history.
std::deque<std::string> ReadEntries(TAaFile* file) {
  std::deque<std::string> entries;
  char line[kLineSize] = {};
  for (std::size_t i = 0; i < kResetHistorySize; ++i) {
    AaFileReadLine(line, kLineSize, file);
    if (std::strstr(line, kEndOfHistory) != nullptr) break;
    if (line[0] != '\0') entries.emplace_back(line);
  }
  return entries;
}

/// @return whether a line with the header was found
bool SkipToHistory(TAaFile* file) {
  char line[kLineSize] = {};
  while (AaFileReadLine(line, kLineSize, file) != nullptr) {
    if (std::strncmp(line, kHistoryHeader, sizeof(kHistoryHeader) - 1) == 0) return true;
  }
  return false;
}

/// Adds the newest entry; the oldest of too many go.
void AddEntry(ResetHistory& history, const std::string& entry) {
  history.entries.push_back(entry);
  while (history.entries.size() > kResetHistorySize) history.entries.pop_front();
}

/// Copies a text of at most @p size - 1 characters.
void CopyText(char* target, std::size_t size, const std::string& text) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(target, text.data(), length);
  target[length] = '\0';
}

/// @return what stands between the last parentheses; the extended word when there are none
std::string ExtendedText(const std::string& entry, const ResetEntry& parsed) {
  const std::size_t open = entry.rfind('(');
  const std::size_t close = entry.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return parsed.extended;
  return entry.substr(open, std::min(close - open, ResetEntry::kExtendedSize - 1));
}

std::string WithoutParentheses(std::string text) {
  std::erase_if(text, [](char c) { return c == '(' || c == ')'; });
  return text;
}

}  // namespace

void BlackBoxData::readResetReasonsFromFile() try {
  const std::string path = PathIn(blackboxFileLocation);
  CLM_LOG(Debug, "BlackBoxData::readResetReasonsFromFile(): reading old reset reasons from %s", path.c_str());
  const ReadFile file = OpenToRead(path);
  if (file == nullptr) {
    CLM_LOG(Debug, "BlackBoxData::readResetReasonsFromFile(): file %s does not exists", path.c_str());
    return;
  }
  if (!SkipToHistory(file.get())) {
    CLM_LOG(Debug, "BlackBoxData::readResetReasonsFromFile(): no old reset reasons found");
    return;
  }
  const std::deque<std::string> entries = ReadEntries(file.get());
  resetReasonAndTimestamp.Update([&entries](ResetHistory& history) {
    history.entries.insert(history.entries.end(), entries.begin(), entries.end());
    return true;
  });
} catch (const std::bad_alloc&) {
  LogOutOfMemory("readResetReasonsFromFile");
}

void BlackBoxData::addResetReasonWithTimestamp(std::string reason) try {
  const AdditionalResetInfo info;
  if (reason.empty()) return;
  const std::string time = UtcText(UtcNow()) + " ";
  const std::string startUp = time + resetReasonReadInStartup + info + "\n";
  const std::string requested = time + reason + info + "\n";
  resetReasonAndTimestamp.Update([&](ResetHistory& history) {
    if (history.waitingNtpTime == 1) {
      AddEntry(history, startUp);
      history.waitingNtpTime = 0;
    }
    AddEntry(history, requested);
    return true;
  });
} catch (const std::bad_alloc&) {
  LogOutOfMemory("addResetReasonWithTimestamp");
}

void BlackBoxData::writeResetReasonToBlackbox() try {
  if (resetReasonAndTimestamp.Read()->waitingNtpTime != 1) return;
  const AdditionalResetInfo info;
  const bool known = !resetReasonReadInStartup.empty();
  const std::string entry = known ? UtcText(UtcNow()) + " " + resetReasonReadInStartup + info + "\n" : "";
  // A reset request may have stored it just now: the entry and the end of the waiting are one step.
  const bool stored = resetReasonAndTimestamp.Update([&](ResetHistory& history) {
    if (history.waitingNtpTime != 1) return false;
    history.waitingNtpTime = 0;
    if (known) AddEntry(history, entry);
    return true;
  });
  if (stored) createBlackboxFile();
} catch (const std::bad_alloc&) {
  LogOutOfMemory("writeResetReasonToBlackbox");
}

u32 BlackBoxData::updateLastResetResonIfRequested() try {
  return resetReasonAndTimestamp.Update([](ResetHistory& history) {
    if (history.entries.empty()) return false;
    std::string& newest = history.entries.back();
    const std::size_t mark = newest.find(kRequested);
    if (mark == std::string::npos) return false;
    newest.erase(mark, std::strlen(kRequested));
    return true;
  })
             ? 1
             : 0;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("updateLastResetResonIfRequested");
  return 0;
}

std::string BlackBoxData::NewestReset() const {
  const auto history = resetReasonAndTimestamp.Read();
  return history->entries.empty() ? "" : history->entries.back();
}

void BlackBoxData::ResetStateInfo(char* category, char* extendedInfo) const try {
  const std::string entry = NewestReset();
  if (!Contains(entry, ResetEntry::kCategoryMark)) {
    CLM_LOG(Debug, "BlackBoxData::ResetStateInfo():ResetCategory 'Unknown', ResetExt ''");
    CopyText(category, ResetEntry::kCategorySize, kUnknown);
    CopyText(extendedInfo, ResetEntry::kExtendedSize, "");
    return;
  }
  const ResetEntry parsed(entry);
  const std::string extended = ExtendedText(entry, parsed);
  CLM_LOG(Debug, "BlackBoxData::ResetStateInfo(): After sscanf: ResetReason '%s', ResetExtInfo '%s'", parsed.category,
          extended.c_str());
  CopyText(category, ResetEntry::kCategorySize, parsed.category);
  CopyText(extendedInfo, ResetEntry::kExtendedSize, Contains(entry, kUnknown) ? "" : WithoutParentheses(extended));
  CLM_LOG(Debug, "BlackBoxData::ResetStateInfo():ResetCategory '%s', ResetExt '%s'", category, extendedInfo);
} catch (const std::bad_alloc&) {
  LogOutOfMemory("ResetStateInfo");
  CopyText(category, ResetEntry::kCategorySize, "");
  CopyText(extendedInfo, ResetEntry::kExtendedSize, "");
}

}  // namespace ps::hwapi::common::climate
