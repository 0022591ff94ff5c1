#include "FanText.h"

#include "FanNames.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <optional>

namespace clmctl {
namespace {

nlohmann::ordered_json HertzOrNull(u32 frequency) {
  const std::optional<u32> hertz = FrequencyHertz(frequency);
  return hertz ? nlohmann::ordered_json(*hertz) : nullptr;
}

std::string AskedText(const FanOutcome& fan, FanQuantity quantity) {
  return quantity == FanQuantity::Speed ? std::to_string(fan.value) + "%" : FrequencyText(fan.value);
}

}  // namespace

std::string FanLines(const FanIndication& indication, const std::string& time) {
  std::string lines;
  for (const FanReading& reading : indication.readings) {
    char line[128];
    std::snprintf(line, sizeof line, "%s  %-16s %6u rpm  %6s  %s\n", time.c_str(), FanText(reading.fan).c_str(),
                  reading.rpm, FrequencyText(reading.frequency).c_str(), StateText(reading));
    lines += line;
  }
  return lines;
}

std::vector<nlohmann::ordered_json> FanObjects(const FanIndication& indication, u32 number, const std::string& time) {
  std::vector<nlohmann::ordered_json> objects;
  for (const FanReading& reading : indication.readings) {
    nlohmann::ordered_json object;
    object["time"] = time;
    object["indication"] = number;
    object["fan"] = FanText(reading.fan);
    object["fan_number"] = reading.fan;
    object["state"] = StateText(reading);
    object["speed_rpm"] = reading.rpm;
    object["pwm_frequency_hz"] = HertzOrNull(reading.frequency);
    objects.push_back(std::move(object));
  }
  return objects;
}

std::string AnswerLines(const FanAnswer& answer, FanQuantity quantity) {
  std::string lines = "FAN          ASKED  STATUS\n";
  for (const FanOutcome& fan : answer.fans) {
    char line[128];
    std::snprintf(line, sizeof line, "%-10s %7s  %s\n", FanText(fan.fan).c_str(), AskedText(fan, quantity).c_str(),
                  StatusText(fan.status).c_str());
    lines += line;
  }
  return lines;
}

std::vector<nlohmann::ordered_json> AnswerObjects(const FanAnswer& answer, FanQuantity quantity) {
  std::vector<nlohmann::ordered_json> objects;
  for (const FanOutcome& fan : answer.fans) {
    nlohmann::ordered_json object;
    object["fan"] = FanText(fan.fan);
    object["fan_number"] = fan.fan;
    if (quantity == FanQuantity::Speed) {
      object["speed_percent"] = fan.value;
    } else {
      object["pwm_frequency_hz"] = HertzOrNull(fan.value);
    }
    object["status"] = StatusName(fan.status);
    object["status_code"] = fan.status;
    object["response_status"] = StatusName(answer.status);
    object["response_status_code"] = answer.status;
    object["info"] = answer.info;
    if (quantity == FanQuantity::Speed) object["period_seconds"] = answer.periodSeconds;
    objects.push_back(std::move(object));
  }
  return objects;
}

}  // namespace clmctl
