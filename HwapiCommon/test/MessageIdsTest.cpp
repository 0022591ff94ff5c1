/// The numbers that other services of the board rely on: message ids, payload sizes, endpoints and online values.
#include "messages/MessageIds.h"

#include "Endpoints.h"
#include "RadIds.h"
#include "messages/Autodet.h"
#include "messages/BlackBox.h"
#include "messages/FanControl.h"
#include "messages/Reset.h"
#include "messages/ResetEvent.h"
#include "messages/TempMeas.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

/// A number with its name, and what it has to be.
struct Row {
  const char* name;
  std::size_t number;
  std::size_t expected;

  friend std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }
};

class WireNumber : public testing::TestWithParam<Row> {};

TEST_P(WireNumber, IsTheAgreedOne) { EXPECT_EQ(GetParam().number, GetParam().expected); }

std::string NameOf(const testing::TestParamInfo<Row>& info) { return info.param.name; }

#define NUMBER_OF(name, expected) \
  Row { #name, name, expected }
#define SIZE_OF(name, expected) \
  Row { #name, sizeof(name), expected }

INSTANTIATE_TEST_SUITE_P(
    MessageId, WireNumber,
    testing::Values(NUMBER_OF(AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG, 0x08E6), NUMBER_OF(API_AUTODET_REQ_MSG, 0x0BBC),
                    NUMBER_OF(API_AUTODET_RESP_MSG, 0x0BBD), NUMBER_OF(API_AUTODET_UNIT_IND_MSG, 0x0BBE),
                    NUMBER_OF(API2_RESET_REQ_MSG, 0x1134), NUMBER_OF(API_GET_BLACKBOX_RESET_INFO_REQ_MSG, 0x1177),
                    NUMBER_OF(API_GET_BLACKBOX_RESET_INFO_RESP_MSG, 0x1178),
                    NUMBER_OF(API_BLACKBOX_STORE_FILE_REQ_MSG, 0x1302),
                    NUMBER_OF(API_BLACKBOX_STORE_FILE_RESP_MSG, 0x1303),
                    NUMBER_OF(API_TEMPERATURE_POLL_TIMER_IND_MSG, 0x203F), NUMBER_OF(API_TEMP_MEAS_REQ_MSG, 0x2B29),
                    NUMBER_OF(API_TEMP_MEAS_RESP_MSG, 0x2B2A), NUMBER_OF(API_TEMP_MEAS_IND_MSG, 0x2B2B),
                    NUMBER_OF(API_RESET_RESP_MSG, 0x2B82), NUMBER_OF(API_OM_GET_RP_RAM_REQ_MSG, 0x2BC5),
                    NUMBER_OF(API_OM_GET_RP_RAM_RESP_MSG, 0x2BC6), NUMBER_OF(API_SET_FAN_PWM_FREQ_REQ_MSG, 0x2C13),
                    NUMBER_OF(API_SET_FAN_PWM_FREQ_RESP_MSG, 0x2C14), NUMBER_OF(API_SET_FAN_SPEED_REQ_MSG, 0x2C15),
                    NUMBER_OF(API_SET_FAN_SPEED_RESP_MSG, 0x2C16), NUMBER_OF(API_FAN_SPEED_IND_MSG, 0x2C17),
                    NUMBER_OF(API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG, 0x2C61),
                    NUMBER_OF(API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG, 0x2C62),
                    NUMBER_OF(API_FAN_SPEED_POLL_TIMER_IND_MSG, 0x2C78), NUMBER_OF(API2_SET_FAN_SPEED_REQ_MSG, 0x2CF1),
                    NUMBER_OF(API2_SET_FAN_SPEED_RESP_MSG, 0x2CF2), NUMBER_OF(API_STORE_BLACKBOX_DATA_REQ_MSG, 0x43A2),
                    NUMBER_OF(API_STORE_BLACKBOX_DATA_RESP_MSG, 0x43A3)),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    PayloadSize, WireNumber,
    testing::Values(SIZE_OF(SApiAutodetReq, 24), SIZE_OF(SApiAutodetUnitInd, 84), SIZE_OF(SApi2ResetReq, 84),
                    SIZE_OF(SApiGetBlackboxResetInfoReq, 12), SIZE_OF(SApiGetBlackboxResetInfoResp, 80),
                    SIZE_OF(SApiBlackboxStoreFileReq, 264), SIZE_OF(SApiBlackboxStoreFileResp, 8),
                    SIZE_OF(SApiTemperaturePollTimerInd, 4), SIZE_OF(SApiTempMeasReq, 20),
                    SIZE_OF(SApiTempMeasResp, 12), SIZE_OF(SApiTempMeasInd, 40), SIZE_OF(SApiResetResp, 20),
                    SIZE_OF(SApiSetFanPwmFreqReq, 8 + 8), SIZE_OF(SApiSetFanPwmFreqResp, 44 + 12),
                    SIZE_OF(SApiSetFanSpeedReq, 12 + 8), SIZE_OF(SApiSetFanSpeedResp, 44 + 12),
                    SIZE_OF(SApiFanSpeedInd, 8 + 16), SIZE_OF(SApiResetEventNotifSubscribeReq, 28),
                    SIZE_OF(SApiResetEventNotifSubscribeResp, 8), SIZE_OF(SApiFanSpeedPollTimerInd, 8),
                    SIZE_OF(SApi2SetFanSpeedReq, 16 + 8), SIZE_OF(SApi2SetFanSpeedResp, 48 + 12),
                    SIZE_OF(SApiStoreBlackboxDataReq, 4), SIZE_OF(SApiStoreBlackboxDataResp, 8)),
    NameOf);

INSTANTIATE_TEST_SUITE_P(Endpoint, WireNumber,
                         testing::Values(NUMBER_OF(HWAPI_RESET_SERVICE, 1191), NUMBER_OF(HWAPI_FAN_SERVICE, 1197),
                                         NUMBER_OF(HWAPI_SWDL_SERVICE, 0x4B2), NUMBER_OF(HWAPI_AUTODET_SERVICE, 1203),
                                         NUMBER_OF(HWAPI_TEMPERATURE_SERVICE, 1206), NUMBER_OF(HWAPI_BLACKBOX, 1241)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Status, WireNumber,
                         testing::Values(NUMBER_OF(EStatus_NoError, 0), NUMBER_OF(EStatus_UndefinedError, 1),
                                         NUMBER_OF(EStatus_InvalidParam, 4), NUMBER_OF(EStatus_Initialized, 6),
                                         NUMBER_OF(EStatus_NotInitialized, 7)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Rad, WireNumber,
                         testing::Values(NUMBER_OF(ERadHwapi_PrintClimateService, 131143),
                                         NUMBER_OF(ERadHwapiState_ClimateState, 2228235),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Temp, 4096),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Fan, 4097),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Temp_And_Fan, 4098)),
                         NameOf);

}  // namespace
