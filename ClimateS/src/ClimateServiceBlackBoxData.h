/// @file
/// The service's way to the black box.
#pragma once

#include "HwapiUnit.h"
#include "messages/Reset.h"

#include <string>

namespace ps::hwapi::common::climate {

/// Decides whether this board has a black box, feeds it, and serves what others ask of it. Service thread only, but
/// for TagObserver.
class ClimateServiceBlackBoxData {
 public:
  ClimateServiceBlackBoxData(EUnitVersion unitVersion, EUnitType unitType);

  /// Takes the black box into use, if the board has one.
  /// @param fanNames the names of the fans; at least @p numberOfFans of them
  /// @return 1 when it is in use, else 0
  u32 InitBlackBoxData(const std::string* fanNames, u32 numberOfFans);
  void AddFansToBlackBox(const std::string* fanNames, u32 numberOfFans);

  /// Watches the tag that tells of a new boot-image link.
  void RegisterTagObserver();
  /// Hands the work over to the service thread. Runs on a platform thread.
  static void TagObserver(const char* name, const void* value, u32 size);

  /// Begins to record temperatures and fan speeds.
  void EnableTemperatureTrace();
  /// @param speed revolutions a minute
  void AddFanSpeed(std::string name, int speed);
  void AddFanSpeedError(std::string name);
  /// Writes the black-box files.
  void createDataFiles();

  /// The boot-image link was made: writes the black-box files and sets the tag that told it back to 0.
  void HandleConfigTagSetNotif();
  /// Records an announced reset of this board, and answers.
  /// @throw MsgHandlingException without a payload or when the reply cannot be created
  void HandleApi2ResetReqMsg(void* msg);
  /// Answers why the board was last reset.
  /// @throw MsgHandlingException without a payload
  void HandleApiBlackboxResetInfoReqMsg(void* msg);
  /// Stores a file and answers whether that worked.
  /// @throw MsgHandlingException without a payload
  void HandleApiBlackboxStoreFileReqMsg(void* msg);

  /// Lets the next start, and only that one, run the self diagnosis.
  void CreateDiagnosticModeOneshotSwconfig() const;

 private:
  bool HasBlackBox() const;
  void StoreReset(const SApi2ResetReq& req);

  EUnitVersion m_unitVersion;
  EUnitType m_unitType;
};

}  // namespace ps::hwapi::common::climate
