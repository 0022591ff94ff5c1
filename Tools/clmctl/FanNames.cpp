#include "FanNames.h"

#include "Arguments.h"
#include "CommandError.h"
#include "Fans.h"

#include <array>
#include <cctype>
#include <charconv>

namespace clmctl {
namespace {

struct Frequency {
  EFanParam param;
  u32 hertz;
};

constexpr std::array kFrequencies = {
    Frequency{.param = EFanParam_PwmFreq1k, .hertz = 1000},
    Frequency{.param = EFanParam_PwmFreq5k, .hertz = 5000},
    Frequency{.param = EFanParam_PwmFreq25k, .hertz = 25000},
};

struct NamedStatus {
  u32 status;
  std::string_view name;
};

constexpr std::array kStatuses = {
    NamedStatus{.status = EStatus_NoError, .name = "NoError"},
    NamedStatus{.status = EStatus_UndefinedError, .name = "UndefinedError"},
    NamedStatus{.status = EStatus_InvalidParam, .name = "InvalidParam"},
};

/// A name without its case, its underscores and the enumeration's name: "EFanUnit_GarFan1" is "garfan1".
std::string Plain(std::string_view name) {
  std::string plain;
  for (const char character : name) {
    if (character != '_') plain += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  constexpr std::string_view kEnumeration = "efanunit";
  return plain.starts_with(kEnumeration) ? plain.substr(kEnumeration.size()) : plain;
}

/// @return how many hertz a unit is; 0 for none
double HertzOf(std::string_view unit) {
  const std::string plain = Plain(unit);
  if (plain == "khz") return 1000;
  return plain == "hz" ? 1 : 0;
}

}  // namespace

EFanUnit ParseFan(std::string_view text) {
  const std::string plain = Plain(text);
  const std::optional<u32> number = commandline::NumberFrom(text);
  for (const commandline::NamedFan& fan : commandline::kFans) {
    if (number == fan.unit || plain == Plain(fan.name)) return fan.unit;
  }
  throw CommandError(ExitCode::Usage, "'" + std::string(text) +
                                          "' is no fan: give 201 to 203 or GAR_FAN1 to GAR_FAN3 (155 to 159, "
                                          "GAR_FAN4 to GAR_FAN8, exist but are not served)");
}

std::string FanText(u32 fan) {
  for (const commandline::NamedFan& named : commandline::kFans) {
    if (named.unit == fan) return std::string(named.name);
  }
  return std::to_string(fan);
}

EFanParam ParseFrequency(std::string_view text) {
  double amount = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), amount, std::chars_format::fixed);
  if (error == std::errc{}) {
    const double hertz = amount * HertzOf(text.substr(static_cast<std::size_t>(end - text.data())));
    for (const Frequency& frequency : kFrequencies) {
      if (hertz == static_cast<double>(frequency.hertz)) return frequency.param;
    }
  }
  throw CommandError(ExitCode::Usage,
                     "'" + std::string(text) + "' is no PWM frequency of a fan: give 1kHz, 5kHz or 25kHz");
}

std::optional<u32> FrequencyHertz(u32 frequency) {
  for (const Frequency& known : kFrequencies) {
    if (known.param == frequency) return known.hertz;
  }
  return std::nullopt;
}

std::string FrequencyText(u32 frequency) {
  const std::optional<u32> hertz = FrequencyHertz(frequency);
  return hertz ? std::to_string(*hertz / 1000) + " kHz" : "-";
}

std::string_view StatusName(u32 status) {
  for (const NamedStatus& named : kStatuses) {
    if (named.status == status) return named.name;
  }
  return "Unknown";
}

std::string StatusText(u32 status) {
  if (status == EStatus_NoError) return "ok";
  return "refused: " + std::string(StatusName(status)) + " (" + std::to_string(status) + ")";
}

}  // namespace clmctl
