/// @file
/// The service's way to the black box.
#pragma once

#include "HwapiUnit.h"

#include <string>

namespace ps::hwapi::common::climate {

/// Decides whether this board has a black box, and feeds it. Service thread only.
///
/// This build keeps no black box yet, so every board is one without.
class ClimateServiceBlackBoxData {
 public:
  ClimateServiceBlackBoxData(EUnitVersion unitVersion, EUnitType unitType);

  /// Takes the black box into use, if the board has one.
  /// @return 1 when it is in use, else 0
  u32 InitBlackBoxData(const std::string* fanNames, u32 numberOfFans);

  /// Begins to record temperatures and fan speeds.
  void EnableTemperatureTrace();
  /// @param speed revolutions a minute
  void AddFanSpeed(std::string name, int speed);
  void AddFanSpeedError(std::string name);
  /// Writes the black-box files.
  void createDataFiles();

  /// The boot-image link was made: writes the black-box files and sets the tag that told it back to 0.
  void HandleConfigTagSetNotif();
  /// Answers a reset announcement.
  /// @throw MsgHandlingException without a payload or when the reply cannot be created
  void HandleApi2ResetReqMsg(void* msg);
  /// Answers why the board was last reset.
  /// @throw MsgHandlingException without a payload
  void HandleApiBlackboxResetInfoReqMsg(void* msg);
  /// Stores a file and answers whether that worked.
  /// @throw MsgHandlingException without a payload
  void HandleApiBlackboxStoreFileReqMsg(void* msg);

 protected:
  EUnitVersion m_unitVersion;
  EUnitType m_unitType;
};

}  // namespace ps::hwapi::common::climate
