/// @file
/// How a board file is read and its entries are taken apart, a second time and as plainly as can be: what random files
/// are compared with.
#pragma once

#include "NextStart.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <string>

namespace ps::hwapi::common::climate::model {

using Entries = std::deque<std::string>;

inline bool Has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

/// Takes the next line, or the first 1023 bytes of it, off a file.
/// @return it, up to its first zero
inline std::string TakeLine(std::string& file) {
  const std::size_t lineFeed = file.find('\n');
  const std::size_t length = std::min<std::size_t>(lineFeed == std::string::npos ? file.size() : lineFeed + 1, 1023);
  const std::string line = file.substr(0, length);
  file.erase(0, length);
  return line.substr(0, line.find('\0'));
}

/// @return the entries that a start finds in a board file
inline Entries ReadBack(std::string file) {
  bool found = false;
  while (!found && !file.empty()) found = TakeLine(file).starts_with("RESET Reason and timestamp:");
  Entries entries;
  for (int lines = 0; lines < 10 && !file.empty(); ++lines) {
    const std::string line = TakeLine(file);
    if (Has(line, "SW VERSION:")) break;
    if (!line.empty()) entries.push_back(line);
  }
  return entries;
}

inline bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Takes blanks and then a word off a text, at most some characters of it.
inline std::string TakeWord(std::string& text, std::size_t most) {
  std::size_t begin = 0;
  while (begin < text.size() && IsBlank(text[begin])) ++begin;
  std::size_t end = begin;
  while (end < text.size() && end - begin < most && !IsBlank(text[end])) ++end;
  const std::string word = text.substr(begin, end - begin);
  text.erase(0, end);
  return word;
}

/// @return whether an entry begins with a number other than 0, and so with a time
inline bool BeginsWithAYear(const std::string& entry) {
  std::size_t i = 0;
  while (i < entry.size() && IsBlank(entry[i])) ++i;
  if (i < entry.size() && (entry[i] == '+' || entry[i] == '-')) ++i;
  while (i < entry.size() && entry[i] == '0') ++i;
  return i < entry.size() && entry[i] >= '1' && entry[i] <= '9';
}

/// @return the word behind the first colon of the reason, and the next one
inline LastReset Parse(const std::string& entry) {
  std::string rest = BeginsWithAYear(entry) ? entry.substr(std::min<std::size_t>(25, entry.size())) : entry;
  const std::size_t colon = rest.find(':');
  if (colon == std::string::npos || colon == 0 || colon > 89) return {};
  rest.erase(0, colon + 1);
  LastReset words;
  words.category = TakeWord(rest, 39);
  if (!words.category.empty()) words.extended = TakeWord(rest, 59);
  return words;
}

/// @return what is told of the last reset
inline LastReset Last(const Entries& entries) {
  if (entries.empty() || !Has(entries.back(), " : ")) return {"Unknown", ""};
  const std::string& entry = entries.back();
  LastReset last = Parse(entry);
  const std::size_t open = entry.find_last_of('(');
  const std::size_t close = entry.find_last_of(')');
  if (open != std::string::npos && close != std::string::npos && open < close) {
    last.extended = entry.substr(open, close - open).substr(0, 59);
  }
  std::erase(last.extended, '(');
  std::erase(last.extended, ')');
  if (Has(entry, "Unknown")) last.extended.clear();
  return last;
}

/// @return the reason of a start with the power coming on
inline std::string AfterPowerOn(const Entries& entries) {
  const std::string newest = entries.empty() ? "" : entries.back();
  std::string reason = "PowerOn reset";
  if (Has(newest, "FPGA reconfiguration")) {
    reason += " (probably FPGA reconfiguration reset)";
  } else if (Has(newest, "Cold reset")) {
    reason += " (probably same as previous cold reset)";
  } else {
    return reason;
  }
  const LastReset words = Parse(newest);
  return Has(newest, " : ") ? reason + " : " + words.category + " " + words.extended : reason;
}

/// @param resetType 0, 5 or 7. Takes the mark of a request out of the newest entry where that stands for this start.
/// @return the reason to be stored; "" for none
inline std::string Start(Entries& entries, unsigned resetType) {
  if (resetType == 0) return AfterPowerOn(entries);
  const std::size_t mark = entries.empty() ? std::string::npos : entries.back().find(" requested");
  if (mark == std::string::npos) return resetType == 5 ? "App Hard reset" : "App POR reset";
  entries.back().erase(mark, 10);
  return "";
}

/// @return the entries one after the other
inline std::string Text(const Entries& entries) {
  std::string text;
  for (const std::string& entry : entries) text += entry;
  return text;
}

}  // namespace ps::hwapi::common::climate::model
