#include "SeededRequests.h"

#include "Wire.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace boardtest {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr const char* kTemperatureTask = "temperature";
constexpr const char* kFanTask = "fan";
constexpr const char* kBlackBoxTask = "blackbox";

constexpr unsigned kReset = 0x1134;
constexpr unsigned kStoreFile = 0x1302;
constexpr unsigned kAnswerOfTheResetService = 0x2C62;

/// A request and what its words are below; 0: any value.
struct Kind {
  const char* to;
  unsigned id;
  std::vector<std::uint32_t> mostOf;
};

const Kind kKinds[] = {
    {.to = kTemperatureTask, .id = 0x2B29, .mostOf = {3, 48, 4'500'000, 3, 1}},          // start, stop of a measurement
    {.to = kTemperatureTask, .id = 0x2B29, .mostOf = {3, 10, 9000, 2, 1}},               // of what this board has
    {.to = kFanTask, .id = 0x2C13, .mostOf = {0, 4, 205, 5, 205, 5, 205, 5}},            // fan frequency
    {.to = kFanTask, .id = 0x2C15, .mostOf = {0, 1, 4, 205, 110, 205, 110, 205, 110}},   // fan speed
    {.to = kFanTask, .id = 0x2CF1, .mostOf = {0, 1, 130, 4, 205, 110, 205, 110, 9, 9}},  // fan speed with a period
    {.to = kBlackBoxTask, .id = 0x1177, .mostOf = {0, 3, 3}},                            // reason of the last reset
    {.to = kBlackBoxTask, .id = kReset, .mostOf = {}},
    {.to = kBlackBoxTask, .id = kStoreFile, .mostOf = {}},
    {.to = kTemperatureTask, .id = kAnswerOfTheResetService, .mostOf = {0, 2}},
};

void Append(Bytes& bytes, std::uint32_t word) {
  unsigned char raw[sizeof word];
  std::memcpy(raw, &word, sizeof word);
  for (const unsigned char byte : raw) bytes.push_back(byte);
}

/// Appends a text in a field of some size; one of just that size has no terminating zero.
void Append(Bytes& bytes, const std::string& text, std::size_t size) {
  const std::size_t end = bytes.size() + size;
  for (const char c : text) bytes.push_back(static_cast<unsigned char>(c));
  bytes.resize(end);
}

}  // namespace

std::uint32_t SeededRequests::Below(std::uint32_t end) {
  const auto number = static_cast<std::uint32_t>(m_random());
  return end == 0 ? number : number % end;
}

std::string SeededRequests::Text(std::size_t longest) {
  std::string text(Below(static_cast<std::uint32_t>(longest) + 1), ' ');
  for (char& c : text) c = static_cast<char>(' ' + Below(95));
  return text;
}

Bytes SeededRequests::StoredFile() {
  static const char* const kSources[] = {"/ffs/run/logs/alarms", "/ffs/run/logs/sfp", "/ffs/run/logs/none", "",
                                         "alarms"};
  static const char* const kKeys[] = {"selftest", "alarms", "", "self_test"};
  Bytes payload;
  Append(payload, Below(0));
  Append(payload, Below(5));
  Append(payload, kSources[Below(std::size(kSources))], 128);
  Append(payload, kKeys[Below(std::size(kKeys))], 128);
  return payload;
}

Bytes SeededRequests::Reset(bool forThisBoard) {
  constexpr std::uint32_t kOn = 1;
  Bytes payload;
  Append(payload, forThisBoard ? 1 : Below(3));
  Append(payload, forThisBoard ? 1 : Below(3));
  Append(payload, forThisBoard ? kOn : Below(3));
  Append(payload, Below(23));
  Append(payload, Below(10));
  Append(payload, Text(60), 60);
  Append(payload, Below(0));
  return payload;
}

Request SeededRequests::Announcement() { return {.to = kBlackBoxTask, .id = kReset, .hex = Hex(Reset(true))}; }

Request SeededRequests::Next() {
  const Kind& kind = kKinds[Below(std::size(kKinds))];
  Bytes payload;
  for (const std::uint32_t end : kind.mostOf) Append(payload, Below(end));
  if (kind.id == kStoreFile) payload = StoredFile();
  if (kind.id == kReset) payload = Reset(Below(2) == 0);
  Request request{.to = kind.to, .id = kind.id, .otherEndian = Below(8) == 0};
  if (request.otherEndian) {
    // Texts come out garbled; that, too, is the same everywhere.
    for (std::size_t i = 0; i + 4 <= payload.size(); i += 4) std::reverse(payload.data() + i, payload.data() + i + 4);
  }
  if (Below(12) == 0) payload.resize(Below(static_cast<std::uint32_t>(payload.size()) + 1));
  request.hex = Hex(payload);
  // The service answers no request without a payload, and no answer.
  if (payload.empty() || kind.id == kAnswerOfTheResetService) request.answers = 0;
  return request;
}

}  // namespace boardtest
