#include "Values.h"

#include "Arguments.h"
#include "CommandError.h"
#include "ServiceNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <limits>

namespace clmctl {

using commandline::NumberFrom;

namespace {

struct TimeUnit {
  std::string_view suffix;
  double milliseconds;
};

constexpr std::array kTimeUnits = {
    TimeUnit{.suffix = "ms", .milliseconds = 1},
    TimeUnit{.suffix = "s", .milliseconds = 1000},
    TimeUnit{.suffix = "min", .milliseconds = 60'000},
    TimeUnit{.suffix = "h", .milliseconds = 3'600'000},
};

[[noreturn]] void Refuse(std::string_view text, std::string_view why) {
  throw CommandError(ExitCode::Usage, "'" + std::string(text) + "' " + std::string(why));
}

int HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const int lower = std::tolower(static_cast<unsigned char>(digit));
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

u32 ParseNumber(std::string_view text, std::string_view what) {
  const std::optional<u32> value = NumberFrom(text);
  if (!value) Refuse(text, "is no " + std::string(what) + ": give a number such as 12 or 0xc");
  return *value;
}

u32 ParseCount(std::string_view text, std::string_view option) {
  const std::optional<u32> count = NumberFrom(text);
  if (count && *count != 0) return *count;
  const std::string given = std::string(option) + " " + (text.empty() ? "''" : std::string(text));
  throw CommandError(ExitCode::Usage, given + (count ? " would show nothing" : " is no number") + "; give 1 or more");
}

std::chrono::milliseconds ParseDuration(std::string_view text) {
  constexpr std::string_view kHint = "is no time: give a number with its unit, such as 500ms, 1s, 2min or 1h";
  double amount = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), amount, std::chars_format::fixed);
  if (error != std::errc{} || amount < 0) Refuse(text, kHint);
  const std::string_view suffix = text.substr(static_cast<std::size_t>(end - text.data()));
  const auto* unit = std::find_if(kTimeUnits.begin(), kTimeUnits.end(),
                                  [suffix](const TimeUnit& candidate) { return candidate.suffix == suffix; });
  if (unit == kTimeUnits.end()) Refuse(text, kHint);
  const double milliseconds = amount * unit->milliseconds;
  if (!(milliseconds <= std::numeric_limits<u32>::max())) Refuse(text, "is too long: at most 4294967295ms, 49 days");
  return std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds + 0.5));
}

std::chrono::milliseconds ParseTimeout(std::string_view text) {
  const std::chrono::milliseconds timeout = ParseDuration(text);
  if (timeout == std::chrono::milliseconds(0)) Refuse(text, "leaves no time for an answer: give --timeout 1ms or more");
  return timeout;
}

TAaSysComSicad ParseAddress(std::string_view text) {
  constexpr std::string_view kHint = "is no address: give BOARD/CPU/TASK such as 1/1/0x4b6, or the whole as 0x010104b6";
  const std::size_t first = text.find('/');
  if (first == std::string_view::npos) {
    const std::optional<u32> whole = text.starts_with("0x") ? NumberFrom(text) : std::nullopt;
    if (!whole) Refuse(text, kHint);
    return *whole;
  }
  const std::size_t second = text.find('/', first + 1);
  if (second == std::string_view::npos) Refuse(text, kHint);
  const std::optional<u32> board = NumberFrom(text.substr(0, first));
  const std::optional<u32> cpu = NumberFrom(text.substr(first + 1, second - first - 1));
  const std::optional<u32> task = NumberFrom(text.substr(second + 1));
  if (!board || !cpu || !task || *board > 0xFF || *cpu > 0xFF || *task > 0xFFFF) Refuse(text, kHint);
  return AaSysComNmapGetSicad(static_cast<u8>(*board), static_cast<u8>(*cpu), static_cast<u16>(*task));
}

u32 ParseTask(std::string_view text) {
  for (const commandline::NamedService& service : commandline::kServices) {
    if (service.name == text) return service.task;
  }
  const std::optional<u32> task = NumberFrom(text);
  if (!task || *task == 0 || *task > 0xFFFF) {
    std::string names;
    for (const commandline::NamedService& service : commandline::kServices) {
      names += (names.empty() ? "" : ", ") + std::string(service.name);
    }
    Refuse(text, "is no task: give a number of 1 to 0xffff such as 0x4b6, or one of " + names);
  }
  return *task;
}

std::vector<u8> ParseHex(std::string_view text) {
  std::string_view rest = text;
  if (rest.starts_with("0x")) rest.remove_prefix(2);
  std::vector<u8> bytes;
  int high = -1;
  for (const char character : rest) {
    if (high < 0 && (character == ' ' || character == ':')) continue;
    const int digit = HexDigit(character);
    if (digit < 0) Refuse(text, "are no bytes: give pairs of hexadecimal digits such as 00ff10 or '00 ff 10'");
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<u8>(high * 16 + digit));
      high = -1;
    }
  }
  if (high >= 0) Refuse(text, "ends in half a byte: every byte takes two hexadecimal digits");
  if (bytes.size() > AASYSCOM_MAX_PAYLOAD) {
    throw CommandError(ExitCode::Usage, "a message carries at most " + std::to_string(AASYSCOM_MAX_PAYLOAD) +
                                            " bytes, not " + std::to_string(bytes.size()));
  }
  return bytes;
}

std::string FormatAddress(TAaSysComSicad address) {
  char text[32];
  std::snprintf(text, sizeof text, "%u/%u/0x%x", static_cast<unsigned>(AaSysComNmapGetBoard(address)),
                static_cast<unsigned>(AaSysComNmapGetCpu(address)), address & 0xFFFFu);
  return text;
}

std::string FormatHex(const void* data, u32 size) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  if (data == nullptr) return text;
  const auto* bytes = static_cast<const u8*>(data);
  text.reserve(std::size_t{2} * size);
  for (u32 i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

std::string FormatId(u32 id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", id);
  return text;
}

}  // namespace clmctl
