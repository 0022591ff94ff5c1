#include "ClimateService.h"

#include "AaConfig.h"
#include "AaSysCom.h"
#include "Endpoints.h"
#include "Log.h"
#include "OnlineTag.h"
#include "messages/MessageIds.h"

namespace ps::hwapi::common::climate {
namespace {

constexpr const char* kName = "CLM";
constexpr u32 kFansOfUnknownVersion = 2;
constexpr u32 kEndpoints[] = {HWAPI_TEMPERATURE_SERVICE, HWAPI_FAN_SERVICE, HWAPI_BLACKBOX};

}  // namespace

ClimateService ClimateService::m_climateService;
std::string ClimateService::m_kelFanNamesStr[3] = {"GAR_FAN1", "GAR_FAN2", "GAR_FAN3"};
u32 ClimateService::m_numberOfFans = 0;
bool ClimateService::m_tempManagementKilled = false;

constexpr ClimateService::Route ClimateService::kTemperatureRoutes[] = {
    {.id = API_TEMP_MEAS_REQ_MSG, .handler = &ClimateService::HandleApiTempMeasReqMsg},
    {.id = API_TEMPERATURE_POLL_TIMER_IND_MSG, .handler = &ClimateService::HandleApiTemperaturePollTimerIndMsg},
};
constexpr ClimateService::Route ClimateService::kFanRoutes[] = {
    {.id = API_SET_FAN_PWM_FREQ_REQ_MSG, .handler = &ClimateService::HandleApiSetFanPwmFreqReqMsg},
    {.id = API_SET_FAN_SPEED_REQ_MSG, .handler = &ClimateService::HandleApiSetFanSpeedReqMsg},
    {.id = API2_SET_FAN_SPEED_REQ_MSG, .handler = &ClimateService::HandleApi2SetFanSpeedReqMsg},
    {.id = API_FAN_SPEED_POLL_TIMER_IND_MSG, .handler = &ClimateService::HandleFanSpeedPollTimerIndMsg},
};
constexpr ClimateService::Route ClimateService::kBlackBoxRoutes[] = {
    {.id = API_STORE_BLACKBOX_DATA_REQ_MSG, .handler = &ClimateService::HandleApiStoreBlackboxDataReqMsg},
    {.id = API_BLACKBOX_STORE_FILE_REQ_MSG, .handler = &ClimateService::HandleApiBlackboxStoreFileReqMsg},
};
constexpr ClimateService::Route ClimateService::kResetRoutes[] = {
    {.id = API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG, .handler = &ClimateService::HandleResetEventNotifSubscribeRespMsg},
    {.id = API2_RESET_REQ_MSG, .handler = &ClimateService::HandleApi2ResetReqMsg},
    {.id = AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG, .handler = &ClimateService::HandleConfigTagSetNotif},
    {.id = API_GET_BLACKBOX_RESET_INFO_REQ_MSG, .handler = &ClimateService::HandleApiBlackboxResetInfoReqMsg},
};
constexpr ClimateService::Route ClimateService::kAutodetRoutes[] = {
    {.id = API_AUTODET_RESP_MSG, .handler = &ClimateService::HandleAutodetResp},
    {.id = API_AUTODET_UNIT_IND_MSG, .handler = &ClimateService::HandleAutodetUnitInd},
};

constexpr ClimateService::SensorGroupPtr ClimateService::*const ClimateService::kSensorGroups[] = {
    &ClimateService::m_kelSensorGroup,     &ClimateService::m_ocxoSensorGroup,   &ClimateService::m_tovSensorGroup,
    &ClimateService::m_daxSensorGroup,     &ClimateService::m_rfp1SensorGroup,   &ClimateService::m_rfp2SensorGroup,
    &ClimateService::m_rfp3SensorGroup,    &ClimateService::m_filterSensorGroup, &ClimateService::m_psuSensorGroup,
    &ClimateService::m_ocxoDcmSensorGroup,
};

static_assert(kGroupSlots == static_cast<std::size_t>(GroupSlot::OcxoDcm) + 1);

ClimateService::ClimateService()
    : Service(kName, HWAPI_TEMPERATURE_SERVICE, ERadHwapi_PrintClimateService, ERadHwapiState_ClimateState) {
  GetArgumentParser().AddOption("-V Verbose\n");
}

ClimateService::~ClimateService() {
  for (SensorGroupPtr ClimateService::*const group : kSensorGroups) (this->*group).reset();
  m_blackBoxData.reset();
  m_spiPoller.reset();
  ClimateService::Exit();
}

bool ClimateService::PreStartup() {
  if (GetArgumentParser().GetOption("V") == "arg on") SetVerbose(1);
  return true;
}

void ClimateService::Init() {
  InitUnitData();
  MapUnitVersionToSensorGroups();
  PublishTemperatureService();
  PublishFanService();
  InitBlackBoxData();
  AaConfigTagRegister(OnlineTagName(HWAPI_AUTODET_SERVICE).c_str(), &ClimateService::PostInit);
}

void ClimateService::Exit() {
  Service::Exit();
  for (const u32 endpoint : kEndpoints) AaSysComUserDeregister(endpoint);
  for (const u32 endpoint : kEndpoints) SetOnlineTag(endpoint, EStatus_NotInitialized);
}

void ClimateService::InitUnitData() {
  m_unitVersion = ApiGetLocalUnitVersion();
  CLM_LOG(Debug, "m_unitVersion: %d", static_cast<int>(m_unitVersion));
  m_unitType = ApiGetLocalUnitType();
  CLM_LOG(Debug, "m_unitType: %d", static_cast<int>(m_unitType));
}

void ClimateService::PublishTemperatureService() {
  SetOnlineTag(HWAPI_TEMPERATURE_SERVICE, EStatus_Initialized);
  RegisterRoutes(kTemperatureRoutes);
}

void ClimateService::PublishFanService() {
  if (AaSysComUserRegister(HWAPI_FAN_SERVICE, AaProEuCurrent()) != HWAPI_FAN_SERVICE) return;
  SetOnlineTag(HWAPI_FAN_SERVICE, EStatus_Initialized);

  const int version = static_cast<int>(m_unitVersion);
  u32 count = 0;
  if (MapUnitVersionToFans(&count) == EStatus_InvalidParam) {
    m_numberOfFans = kFansOfUnknownVersion;
    CLM_LOG(Error, "HWAPI_FAN_SERVICE is running on a unsupported unit version: %d (0x%x), default number of fans: %d",
            version, static_cast<u32>(version), static_cast<int>(m_numberOfFans));
  } else {
    m_numberOfFans = count;
    CLM_LOG(Debug, "HWAPI_FAN_SERVICE is running on a unit version: %d (0x%x), number of fans: %d", version,
            static_cast<u32>(version), static_cast<int>(m_numberOfFans));
  }
  if (m_numberOfFans != 0) {
    RegisterRoutes(kFanRoutes);
  } else {
    CLM_LOG(Info,
            "HWAPI_FAN_SERVICE is running but doesn't response request messages because unit %d (0x%x) has no fans",
            version, static_cast<u32>(version));
  }
}

void ClimateService::InitBlackBoxData() {
  m_blackBoxData = std::make_unique<ClimateServiceBlackBoxData>(m_unitVersion, m_unitType);
  if (m_blackBoxData->InitBlackBoxData(m_kelFanNamesStr, m_numberOfFans) != 0) RegisterResetMsgDelegates();

  const u32 id = AaSysComUserRegister(HWAPI_BLACKBOX, AaProEuCurrent());
  if (id != HWAPI_BLACKBOX) {
    throw InitFailedException("HWAPI_BLACKBOX Service SysCom registration failed", __FILE_NAME__, __LINE__);
  }
  SetOnlineTag(HWAPI_BLACKBOX, EStatus_Initialized);
  CLM_LOG(Info, "HWAPI_BLACKBOX registered to SysCom, CpId: (0x%x)", id);
  RegisterRoutes(kBlackBoxRoutes);
}

void ClimateService::StartOrboLitePsuSpiPoller() {
  m_spiPoller = std::make_unique<PsuSpiPoller>();
  m_spiPoller->enableSpiEvents();
}

void ClimateService::RegisterRoutes(std::span<const Route> routes) {
  for (const Route& route : routes) {
    AddMsgDelegate(new MsgMethodDelegate<ClimateService>(this, route.handler, route.id));
  }
}

void ClimateService::RegisterResetMsgDelegates() { RegisterRoutes(kResetRoutes); }

}  // namespace ps::hwapi::common::climate
