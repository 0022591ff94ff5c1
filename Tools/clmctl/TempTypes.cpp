#include "TempTypes.h"

#include "Arguments.h"
#include "CommandError.h"

#include <strings.h>

#include <array>

namespace clmctl {
namespace {

/// Indexed by ETempSensorType.
constexpr std::array<std::string_view, 45> kSensorTypes = {
    "None",    "Dax1",   "Dax2",   "Dax3",   "DaxAll", "Borz",       "Kel",     "KelOcxo", "Tov",
    "RFP1",    "RFP2",   "RFP3",   "Filter", "Psu",    "KelOcxoDcm", "Mipo1",   "Mipo2",   "Nusk1",
    "Nusk2",   "Nusk3",  "Nusk4",  "Nusk5",  "Nusk6",  "Nusk7",      "Nusk8",   "Nusk9",   "Nusk10",
    "Nusk11",  "Nusk12", "Nusk13", "Nusk14", "Nusk15", "Nusk16",     "NuskAll", "Odra1",   "Odra2",
    "OdraAll", "Rukta1", "Rukta2", "Rukta3", "Rukta4", "RuktaAll",   "Sivk",    "Nusk",    "Backplane"};
static_assert(kSensorTypes[ETempSensorType_KelOcxoDcm] == "KelOcxoDcm");
static_assert(kSensorTypes[ETempSensorType_Nusk16] == "Nusk16");
static_assert(kSensorTypes[ETempSensorType_RuktaAll] == "RuktaAll");
static_assert(kSensorTypes[ETempSensorType_Backplane] == "Backplane");

struct Outcome {
  u32 error;
  std::string_view name;
  std::string_view meaning;
};

constexpr std::array kOutcomes = {
    Outcome{.error = ETempMeasError_NoError, .name = "NoError", .meaning = "done"},
    Outcome{.error = ETempMeasError_Resolution, .name = "Resolution", .meaning = "this resolution is not served"},
    Outcome{.error = ETempMeasError_SensorType,
            .name = "SensorType",
            .meaning = "this unit has no sensors of this type; `clmctl temp types` lists the types"},
    Outcome{.error = ETempMeasError_Command, .name = "Command", .meaning = "the service knows no such command"},
    Outcome{.error = ETempMeasError_Interval,
            .name = "Interval",
            .meaning = "the interval is refused: give 900ms to 4294967ms (about 71min)"},
    Outcome{.error = ETempMeasError_AlreadyStarted,
            .name = "AlreadyStarted",
            .meaning =
                "a measurement of these sensors runs already, for whoever started it, and there can be only one; "
                "stop it first: clmctl temp stop"},
    Outcome{.error = ETempMeasError_NoResponse, .name = "NoResponse", .meaning = "the sensors' unit does not answer"},
};

const Outcome* FindOutcome(u32 error) {
  for (const Outcome& outcome : kOutcomes) {
    if (outcome.error == error) return &outcome;
  }
  return nullptr;
}

}  // namespace

ETempSensorType ParseSensorType(std::string_view text) {
  const std::string name(text);
  for (std::size_t i = 0; i < kSensorTypes.size(); ++i) {
    if (strcasecmp(name.c_str(), kSensorTypes[i].data()) == 0) return static_cast<ETempSensorType>(i);
  }
  if (const std::optional<u32> number = commandline::NumberFrom(text)) return static_cast<ETempSensorType>(*number);
  throw CommandError(ExitCode::Usage, "'" + name +
                                          "' is no sensor type: give a name such as Kel, KelOcxo, DaxAll, Tov, RFP1 "
                                          "(`clmctl temp types` lists them) or a number");
}

std::string SensorTypeText(u32 type) {
  return type < kSensorTypes.size() ? std::string(kSensorTypes[type]) : std::to_string(type);
}

std::string_view TempErrorName(u32 error) {
  const Outcome* outcome = FindOutcome(error);
  return outcome != nullptr ? outcome->name : "Unknown";
}

std::string TempErrorMeaning(u32 error, const std::string& type) {
  const Outcome* outcome = FindOutcome(error);
  if (outcome == nullptr) return "the service answered with the unknown error " + std::to_string(error);
  std::string text(outcome->meaning);
  if (error == ETempMeasError_AlreadyStarted) text += " " + type;
  return text;
}

}  // namespace clmctl
