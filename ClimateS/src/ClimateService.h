/// @file
/// The climate service: life cycle, endpoints, and the handlers of its messages.
#pragma once

#include "AaSysTime.h"
#include "ClimateServiceBlackBoxData.h"
#include "HwapiUnit.h"
#include "PsuSpiPoller.h"
#include "SensorGroup.h"
#include "SensorGroupsOfBoard.h"
#include "Service.h"
#include "ddal_fan.h"
#include "messages/FanControl.h"
#include "messages/TempMeas.h"

#include <memory>
#include <span>
#include <string>

namespace ps::hwapi::common::climate {

class FanRequest;
class FanResponse;

/// A fan as clients and as the driver know it.
struct FanAddress {
  EFanUnit unit;
  ddal_fan_id_t id;
};

/// A PWM frequency as clients and as the driver know it.
struct FanPwmFrequency {
  EFanParam param;
  int hertz;
};

/// One object a process. Handlers take the received message, which stays the caller's, and run on the service thread;
/// those that say so throw MsgHandlingException, which the receive loop catches.
class ClimateService : public Service {
 public:
  using SensorGroupPtr = std::unique_ptr<SensorGroup>;

  ClimateService();
  ~ClimateService() override;

  bool PreStartup() override;
  /// @throw InitFailedException when the black-box endpoint cannot be registered
  void Init() override;
  /// Deregisters the endpoints and announces them as gone.
  void Exit() override;

  /// Second half of the start-up: observer of the autodetection service's online tag, on a platform thread. Waits for
  /// the reset service. The arguments are not used.
  /// @throw MsgHandlingException when a message cannot be created, or when the service is stopped meanwhile
  static void PostInit(const char* tagName, const void* value, u32 size);
  void WaitingForAdetSToInit();

  /// Temperature (ClimateServiceTemperature.cpp).
  /// Builds the sensor groups of this unit version.
  void MapUnitVersionToSensorGroups();
  /// @throw MsgHandlingException without a payload or when a message cannot be created; anything else ends the process
  void HandleApiTempMeasReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when a message cannot be created
  void HandleApiTemperaturePollTimerIndMsg(void* msg);

  /// Fans (ClimateServiceFans.cpp, ClimateServiceFanSpeed.cpp).
  /// @param count out: the number of fans of this unit version; untouched on failure
  /// @return EStatus_NoError, or EStatus_InvalidParam for a version without a row
  EStatus MapUnitVersionToFans(u32* count);
  static EStatus GetFanId(EFanUnit unit, ddal_fan_id_t* id);
  static EStatus GetPwmFreqInHz(EFanParam param, int* hz);
  static EStatus ConvertPwmFreqToEFanParam(int hz, EFanParam* param);
  /// @param info 32 bytes; a text of exactly 32 characters fills it without a terminating zero
  static void ClearAndFillInfotext(unsigned char* info, const char* text);
  /// @throw MsgHandlingException without a payload or when the reply cannot be created
  void HandleApiSetFanPwmFreqReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when a message cannot be created
  void HandleApiSetFanSpeedReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when a message cannot be created
  void HandleApi2SetFanSpeedReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when the indication cannot be created
  void HandleFanSpeedPollTimerIndMsg(void* msg);

  /// Black box (ClimateServiceBlackBox.cpp).
  /// @throw MsgHandlingException without a payload or when the response cannot be created
  void HandleApiStoreBlackboxDataReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when the response cannot be created
  void HandleApiBlackboxStoreFileReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload
  void HandleApiBlackboxResetInfoReqMsg(void* msg);
  /// @throw MsgHandlingException without a payload or when the reply cannot be created
  void HandleApi2ResetReqMsg(void* msg);
  void HandleConfigTagSetNotif(void* msg);

  /// Neighbours (ClimateServiceNeighbours.cpp).
  /// @throw MsgHandlingException without a payload
  void HandleResetEventNotifSubscribeRespMsg(void* msg);
  void HandleAutodetResp(void* msg);
  /// @throw MsgHandlingException without a payload
  void HandleAutodetUnitInd(void* msg);

 private:
  /// A message id and its handler.
  struct Route {
    u32 id;
    void (ClimateService::*handler)(void* msg);
  };
  static const Route kTemperatureRoutes[2];
  static const Route kFanRoutes[4];
  static const Route kBlackBoxRoutes[2];
  static const Route kResetRoutes[4];
  static const Route kAutodetRoutes[2];

  void InitUnitData();
  void PublishTemperatureService();
  void PublishFanService();
  void InitBlackBoxData();
  void StartOrboLitePsuSpiPoller();
  void RegisterRoutes(std::span<const Route> routes);
  void RegisterResetMsgDelegates();
  void RegisterAutodetMsgDelegates();
  void WaitingForResetsToInit();
  void SubscribeToResetService();

  /// The groups' members in the order of GroupSlot.
  static SensorGroupPtr ClimateService::*const kSensorGroups[kGroupSlots];

  /// @return the group that serves a sensor type; null when there is none
  SensorGroup* SelectSensorGroup(ETempSensorType sensorType) const;
  ETempMeasError HandleMeasurementCommand(const SApiTempMeasReq& req, TAaSysComSicad client);
  ETempMeasError StartMeasurement(SensorGroup& group, const SApiTempMeasReq& req, TAaSysComSicad client);
  ETempMeasError StopMeasurement(SensorGroup& group, const SApiTempMeasReq& req);

  /// The beginning of the three set requests: the first one stops the operating system's own climate control.
  /// @return payload size in bytes
  u32 BeginFanRequest(void* msg);
  EStatus KillTempManagement();
  EStatus CountFansOfCabinet(u32* count);
  EStatus SetPwmFrequency(EFanUnit fan, EFanParam param);
  EStatus SetFanSpeed(EFanUnit fan, u32 speed);
  /// @return whether an item failed
  bool SetFanSpeeds(const FanRequest& req, u32 items, FanResponse& resp);
  /// @param outcome out: EStatus_InvalidParam when the period is out of range, else untouched
  static u32 FirstDelaySeconds(u32 timePeriod, EStatus* outcome);
  /// @return whether the first indication is on its way
  bool StartFanPolling(const FanRequest& req, TAaSysComSicad sender, u32 delaySeconds);
  /// Arms the timer of the next indication.
  void ContinueFanPolling(const SApiFanSpeedPollTimerInd& record);
  SHwapiFanUnitInfo ReadFan(u32 index);

  static ClimateService m_climateService;
  static std::string m_kelFanNamesStr[3];  ///< names of the fans in logs and in the black box
  static u32 m_numberOfFans;
  static bool m_tempManagementKilled;
  static const FanAddress m_fanAddr[3];
  static const FanPwmFrequency m_fanPwmFregRate[3];

  TAaSysTimerId m_tmoKelFanSpeedPolling = 0;
  SensorGroupPtr m_kelSensorGroup;
  SensorGroupPtr m_ocxoSensorGroup;
  SensorGroupPtr m_daxSensorGroup;
  SensorGroupPtr m_tovSensorGroup;
  SensorGroupPtr m_rfp1SensorGroup;
  SensorGroupPtr m_rfp2SensorGroup;
  SensorGroupPtr m_rfp3SensorGroup;
  SensorGroupPtr m_filterSensorGroup;
  SensorGroupPtr m_psuSensorGroup;
  SensorGroupPtr m_ocxoDcmSensorGroup;
  EUnitVersion m_unitVersion = EUnitVersion_Unallocated;
  EUnitType m_unitType = EUnitType_Unknown;
  std::unique_ptr<ClimateServiceBlackBoxData> m_blackBoxData;
  std::unique_ptr<PsuSpiPoller> m_spiPoller;
};

}  // namespace ps::hwapi::common::climate
