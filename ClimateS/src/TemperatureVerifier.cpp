#include "TemperatureVerifier.h"

#include "HwapiException.h"
#include "HwapiUnit.h"
#include "Log.h"
#include "ddal_error.h"
#include "ddal_temp.h"
#include "messages/TempSensorName.h"

#include <sys/types.h>
#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

namespace ps::hwapi::common::climate {
namespace {

constexpr std::array kMorvetVersions = {EUnitVersion_Vyda, EUnitVersion_Vydj, EUnitVersion_Vyea};

/// A power-amplifier sensor and the number of the RF ASIC and RF chain that it belongs to.
struct PaSensor {
  u32 name;
  u32 index;
};
constexpr std::array kPaSensors = {
    PaSensor{.name = TEMP_SENSOR_RFP1_PA, .index = 0},
    PaSensor{.name = TEMP_SENSOR_RFP2_PA, .index = 1},
    PaSensor{.name = TEMP_SENSOR_RFP3_PA, .index = 2},
};

constexpr u32 kRfAsicEnableRegister = 0x3268;
constexpr u32 kRfChainEnabled = 1;
constexpr int kTooCold = -40000;
constexpr int kTooHot = 150000;
constexpr int kApproximationMask = 0xFFE0;
constexpr int kNotPlausible = DDAL_ERR_NOT_PLAUSIBLE;
constexpr int kRfAsicOff = DDAL_ERR_RF_ASIC_OFF;

const PaSensor* FindPaSensor(u32 name) {
  const auto* found = std::find_if(kPaSensors.begin(), kPaSensors.end(),
                                   [name](const PaSensor& sensor) { return sensor.name == name; });
  return found != kPaSensors.end() ? found : nullptr;
}

[[noreturn]] void Fail(const char* operation, const char* description, int code, std::size_t line) {
  throw OpException(operation, description, static_cast<u32>(code), __FILE_NAME__, line);
}

}  // namespace

int TemperatureVerifier::GetCurrentTemperature(unsigned int name, unsigned int address, int* temperature) noexcept {
  if (!isMorvet() || FindPaSensor(name) == nullptr) return ddal_temp_get_curr(address, temperature);
  try {
    *temperature = GetPaSensorsValidCurrTemp(name, address);
    return 0;
  } catch (const OpException& e) {
    CLM_LOG(Error, "Exception '%s' Description '%s' Operatio name '%s' Error code '%d' in '%s:%zi'", e.what(),
            e.getDescription().c_str(), e.getOpName().c_str(), static_cast<int>(e.getErrCode()), e.getFile().c_str(),
            static_cast<ssize_t>(e.getLine()));
    return static_cast<int>(e.getErrCode());
  } catch (const std::bad_alloc&) {
    // A check failed, and memory does not suffice to say which.
    CLM_LOG(Error, "TemperatureVerifier::GetCurrentTemperature: out of memory");
    return kNotPlausible;
  }
}

bool TemperatureVerifier::isMorvet() {
  const EUnitVersion version = ApiGetLocalUnitVersion();
  const bool morvet = std::find(kMorvetVersions.begin(), kMorvetVersions.end(), version) != kMorvetVersions.end();
  CLM_LOG(Debug, "TemperatureVerifier::isMorvet: %d", morvet ? 1 : 0);
  return morvet;
}

int TemperatureVerifier::GetPaSensorsValidCurrTemp(unsigned int name, unsigned int address) {
  const PaSensor* sensor = FindPaSensor(name);
  if (sensor == nullptr) return kNotPlausible;
  CheckDdalRfAsicReadReg(sensor->index);
  CheckDdalRfChainStatus(sensor->index);
  return GetValidTemperature(address);
}

bool TemperatureVerifier::CheckDdalRfAsicReadReg(ddal_rf_asic_id_t asic) {
  u32 value = 0;
  const int rc = ddal_rf_asic_read_reg(asic, kRfAsicEnableRegister, &value);
  CLM_LOG(Debug, "ddal_rf_asic_read_reg err'%i' val'%i'", rc, static_cast<int>(value));
  if (rc != 0 || value == 0) Fail("ddal_rf_asic_read_reg", "Fail/Not Enabled", kRfAsicOff, __LINE__);
  return true;
}

bool TemperatureVerifier::CheckDdalRfChainStatus(ddal_rf_chain_id_t chain) {
  u32 status = 0;
  const int rc = ddal_rf_chain_status_get(chain, &status);
  CLM_LOG(Debug, "ddal_rf_chain_status_get err'%i' status'%d'", rc, static_cast<int>(status));
  if (rc != 0 || status != kRfChainEnabled) {
    Fail("ddal_rf_chain_status_get", "Fail/Not Enabled", kNotPlausible, __LINE__);
  }
  return true;
}

int TemperatureVerifier::GetValidTemperature(unsigned int address) {
  std::array<int, 3> readings{};
  for (int& reading : readings) GetTemperature(address, &reading);
  for (const int reading : readings) ValidTemperatureRange(reading);
  WhetherTemperaturesApproximatelySame(readings[0], readings[1], readings[2]);
  return readings[2];
}

void TemperatureVerifier::GetTemperature(unsigned int address, int* temperature) {
  const int rc = ddal_temp_get_curr(address, temperature);
  if (rc != 0) Fail("ddal_temp_get_curr", "Fail", rc, __LINE__);
}

bool TemperatureVerifier::ValidTemperatureRange(int temperature) {
  if (temperature <= kTooCold || temperature >= kTooHot) {
    Fail("ValidTemperatureRange", "Out of temperature range", kNotPlausible, __LINE__);
  }
  return true;
}

bool TemperatureVerifier::WhetherTemperaturesApproximatelySame(int first, int second, int third) {
  const int a = ApproximatedTemp(first);
  const int b = ApproximatedTemp(second);
  const int c = ApproximatedTemp(third);
  if (a != b || a != c) {
    Fail("WhetherTemperaturesApproximatelySame", "Temperatures are not same", kNotPlausible, __LINE__);
  }
  return true;
}

int TemperatureVerifier::ApproximatedTemp(int temperature) { return temperature & kApproximationMask; }

}  // namespace ps::hwapi::common::climate
