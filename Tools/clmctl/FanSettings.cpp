#include "FanSettings.h"

#include "Arguments.h"
#include "CommandError.h"
#include "FanNames.h"
#include "Values.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr u32 kFullSpeed = 100;  // per cent

[[noreturn]] void Refuse(std::string_view text, std::string_view why) {
  throw CommandError(ExitCode::Usage, "'" + std::string(text) + "' " + std::string(why));
}

u32 ParseSpeed(std::string_view text) {
  std::string_view digits = text;
  if (digits.ends_with('%')) digits.remove_suffix(1);
  const bool decimal = !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
  const std::optional<u32> speed = decimal ? commandline::NumberFrom(digits) : std::nullopt;
  if (!speed || *speed > kFullSpeed) Refuse(text, "is no fan speed: give whole per cent from 0 to 100, such as 60%");
  return *speed;
}

template <typename ParseValue>
std::vector<FanSetting> ParseSettings(const std::vector<std::string>& words, std::string_view example,
                                      ParseValue parseValue) {
  std::vector<FanSetting> settings;
  for (const std::string& word : words) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) Refuse(word, "is no setting of a fan: give one such as " + std::string(example));
    const EFanUnit fan = ParseFan(std::string_view(word).substr(0, equals));
    if (std::any_of(settings.begin(), settings.end(), [fan](const FanSetting& other) { return other.fan == fan; })) {
      Refuse(word, "sets " + FanText(fan) + " a second time; give each fan once");
    }
    settings.push_back({.fan = fan, .value = parseValue(std::string_view(word).substr(equals + 1))});
  }
  return settings;
}

}  // namespace

std::vector<FanSetting> ParseFanSpeeds(const std::vector<std::string>& words) {
  return ParseSettings(words, "201=60", ParseSpeed);
}

std::vector<FanSetting> ParseFanFrequencies(const std::vector<std::string>& words) {
  return ParseSettings(words, "201=25kHz", ParseFrequency);
}

std::chrono::seconds ParseFanPeriod(std::string_view text) {
  const std::chrono::milliseconds period = ParseDuration(text);
  if (period < kFanShortestPeriod || period > kFanLongestPeriod) {
    Refuse(text, "is no period of the fan service: give 8s to 120s");
  }
  if (period % std::chrono::seconds(1) != std::chrono::milliseconds(0)) {
    Refuse(text, "is no whole number of seconds: give 8s to 120s");
  }
  return std::chrono::duration_cast<std::chrono::seconds>(period);
}

SMessageAddress ParseFanReceiver(std::string_view text) {
  const TAaSysComSicad address = ParseAddress(text);
  const auto task = static_cast<u16>(address & 0xFFFFu);
  if (task == 0) Refuse(text, "has no task: the fan service would send to the sender of the request instead");
  return {.board = AaSysComNmapGetBoard(address), .cpu = AaSysComNmapGetCpu(address), .task = task};
}

}  // namespace clmctl
