/// @file
/// Reading a temperature sensor, with the plausibility check of power-amplifier sensors.
#pragma once

#include "ddal_rf.h"

namespace ps::hwapi::common::climate {

/// The one place where a sensor is read. Stateless. Power-amplifier sensors of a Morvet board are trusted only when
/// their RF ASIC and chain are enabled and three readings in a row are plausible and agree. Service thread only.
class TemperatureVerifier {
 public:
  /// Reads a sensor. Never throws.
  /// @param name        sensor name (ETempSensorName)
  /// @param address     driver device id
  /// @param temperature out: thousandths of a degree Celsius; untouched on failure
  /// @return 0, or an error code for ddal_strerror: the driver's, -1001 (chain off, out of range, readings disagree) or
  ///         -1004 (RF ASIC off); -1001 also when there is no memory to say which check failed
  int GetCurrentTemperature(unsigned int name, unsigned int address, int* temperature) noexcept;

  /// @return whether this is a board whose power-amplifier sensors are verified
  bool isMorvet();
  /// @return the verified reading, or -1001 for a name that is no power-amplifier sensor
  /// @throw OpException when a check fails
  int GetPaSensorsValidCurrTemp(unsigned int name, unsigned int address);
  /// @return true @throw OpException when the ASIC does not report itself enabled
  bool CheckDdalRfAsicReadReg(ddal_rf_asic_id_t asic);
  /// @return true @throw OpException when the chain does not report itself enabled
  bool CheckDdalRfChainStatus(ddal_rf_chain_id_t chain);
  /// @return the third of three readings @throw OpException when one fails, is implausible, or they disagree
  int GetValidTemperature(unsigned int address);
  /// Reads once. @throw OpException with the driver's code
  void GetTemperature(unsigned int address, int* temperature);
  /// @return true @throw OpException outside -40000 < temperature < 150000
  bool ValidTemperatureRange(int temperature);
  /// @return true @throw OpException when the readings differ after ApproximatedTemp
  bool WhetherTemperaturesApproximatelySame(int first, int second, int third);
  /// @return bits 5 to 15 of a reading: steps of 32 thousandths, without the bits above
  int ApproximatedTemp(int temperature);
};

}  // namespace ps::hwapi::common::climate
