/// The numbers that other services of the board rely on: message ids, payload sizes, endpoints, online values, and the
/// enumerators of temperature measurement.
#include "messages/MessageIds.h"

#include "Endpoints.h"
#include "RadIds.h"
#include "messages/Autodet.h"
#include "messages/BlackBox.h"
#include "messages/FanControl.h"
#include "messages/Reset.h"
#include "messages/ResetEvent.h"
#include "messages/TempMeas.h"
#include "messages/TempSensorName.h"

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

INSTANTIATE_TEST_SUITE_P(TempMeasCommand, WireNumber,
                         testing::Values(NUMBER_OF(ETempMeasCommand_Start, 0), NUMBER_OF(ETempMeasCommand_Stop, 1)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(TempMeasResolution, WireNumber,
                         testing::Values(NUMBER_OF(ETempMeasResolution_Normal, 0),
                                         NUMBER_OF(ETempMeasResolution_High, 1)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(TempMeasError, WireNumber,
                         testing::Values(NUMBER_OF(ETempMeasError_NoError, 0), NUMBER_OF(ETempMeasError_Resolution, 1),
                                         NUMBER_OF(ETempMeasError_SensorType, 3), NUMBER_OF(ETempMeasError_Command, 4),
                                         NUMBER_OF(ETempMeasError_Interval, 5),
                                         NUMBER_OF(ETempMeasError_AlreadyStarted, 6),
                                         NUMBER_OF(ETempMeasError_NoResponse, 7)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(TempSensorType, WireNumber,
                         testing::Values(NUMBER_OF(ETempSensorType_None, 0), NUMBER_OF(ETempSensorType_Dax1, 1),
                                         NUMBER_OF(ETempSensorType_Dax2, 2), NUMBER_OF(ETempSensorType_Dax3, 3),
                                         NUMBER_OF(ETempSensorType_DaxAll, 4), NUMBER_OF(ETempSensorType_Borz, 5),
                                         NUMBER_OF(ETempSensorType_Kel, 6), NUMBER_OF(ETempSensorType_KelOcxo, 7),
                                         NUMBER_OF(ETempSensorType_Tov, 8), NUMBER_OF(ETempSensorType_RFP1, 9),
                                         NUMBER_OF(ETempSensorType_RFP2, 10), NUMBER_OF(ETempSensorType_RFP3, 11),
                                         NUMBER_OF(ETempSensorType_Filter, 12), NUMBER_OF(ETempSensorType_Psu, 13),
                                         NUMBER_OF(ETempSensorType_KelOcxoDcm, 14),
                                         NUMBER_OF(ETempSensorType_Mipo1, 15), NUMBER_OF(ETempSensorType_Mipo2, 16),
                                         NUMBER_OF(ETempSensorType_Nusk1, 17), NUMBER_OF(ETempSensorType_Nusk2, 18),
                                         NUMBER_OF(ETempSensorType_Nusk3, 19), NUMBER_OF(ETempSensorType_Nusk4, 20),
                                         NUMBER_OF(ETempSensorType_Nusk5, 21), NUMBER_OF(ETempSensorType_Nusk6, 22),
                                         NUMBER_OF(ETempSensorType_Nusk7, 23), NUMBER_OF(ETempSensorType_Nusk8, 24),
                                         NUMBER_OF(ETempSensorType_Nusk9, 25), NUMBER_OF(ETempSensorType_Nusk10, 26),
                                         NUMBER_OF(ETempSensorType_Nusk11, 27), NUMBER_OF(ETempSensorType_Nusk12, 28),
                                         NUMBER_OF(ETempSensorType_Nusk13, 29), NUMBER_OF(ETempSensorType_Nusk14, 30),
                                         NUMBER_OF(ETempSensorType_Nusk15, 31), NUMBER_OF(ETempSensorType_Nusk16, 32),
                                         NUMBER_OF(ETempSensorType_NuskAll, 33), NUMBER_OF(ETempSensorType_Odra1, 34),
                                         NUMBER_OF(ETempSensorType_Odra2, 35), NUMBER_OF(ETempSensorType_OdraAll, 36),
                                         NUMBER_OF(ETempSensorType_Rukta1, 37), NUMBER_OF(ETempSensorType_Rukta2, 38),
                                         NUMBER_OF(ETempSensorType_Rukta3, 39), NUMBER_OF(ETempSensorType_Rukta4, 40),
                                         NUMBER_OF(ETempSensorType_RuktaAll, 41), NUMBER_OF(ETempSensorType_Sivk, 42),
                                         NUMBER_OF(ETempSensorType_Nusk, 43), NUMBER_OF(ETempSensorType_Backplane, 44)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(
    TempSensorName, WireNumber,
    testing::Values(NUMBER_OF(TEMP_SENSOR_KEL_MCU, 6), NUMBER_OF(TEMP_SENSOR_KEL, 7), NUMBER_OF(TEMP_SENSOR_KEL_ENV, 8),
                    NUMBER_OF(TEMP_SENSOR_KEL_VORNIK, 9), NUMBER_OF(TEMP_SENSOR_KEL_INTAKE, 10),
                    NUMBER_OF(TEMP_SENSOR_KEL_OCXO, 11), NUMBER_OF(TEMP_SENSOR_DAX1_DSP1, 13),
                    NUMBER_OF(TEMP_SENSOR_TOV_MCU, 33), NUMBER_OF(TEMP_SENSOR_TOV, 34),
                    NUMBER_OF(TEMP_SENSOR_RFP1_RF_ASIC, 35), NUMBER_OF(TEMP_SENSOR_RFP1_PDRX, 36),
                    NUMBER_OF(TEMP_SENSOR_RFP1_PA, 37), NUMBER_OF(TEMP_SENSOR_RFP1_RF_ASIC_PA, 38),
                    NUMBER_OF(TEMP_SENSOR_RFP2_RF_ASIC, 39), NUMBER_OF(TEMP_SENSOR_RFP2_PDRX, 40),
                    NUMBER_OF(TEMP_SENSOR_RFP2_PA, 41), NUMBER_OF(TEMP_SENSOR_RFP2_RF_ASIC_PA, 42),
                    NUMBER_OF(TEMP_SENSOR_RFP3_RF_ASIC, 43), NUMBER_OF(TEMP_SENSOR_RFP3_PDRX, 44),
                    NUMBER_OF(TEMP_SENSOR_RFP3_PA, 45), NUMBER_OF(TEMP_SENSOR_RFP3_RF_ASIC_PA, 46),
                    NUMBER_OF(TEMP_SENSOR_FILTER, 47), NUMBER_OF(TEMP_SENSOR_MCU_ENV, 48),
                    NUMBER_OF(TEMP_SENSOR_MIPO, 49), NUMBER_OF(TEMP_SENSOR_MIPO_ENV, 50),
                    NUMBER_OF(TEMP_SENSOR_VORNIK_ENV, 51), NUMBER_OF(TEMP_SENSOR_DAX1_DSP1_ENV, 52),
                    NUMBER_OF(TEMP_SENSOR_RFP1_RF_ASIC_ENV, 53), NUMBER_OF(TEMP_SENSOR_RFP2_RF_ASIC_ENV, 54),
                    NUMBER_OF(TEMP_SENSOR_RFP3_RF_ASIC_ENV, 55), NUMBER_OF(TEMP_SENSOR_PSU, 56),
                    NUMBER_OF(TEMP_SENSOR_KEL_OCXO_DCM, 57), NUMBER_OF(TEMP_SENSOR_ZUN, 233)),
    NameOf);

INSTANTIATE_TEST_SUITE_P(Rad, WireNumber,
                         testing::Values(NUMBER_OF(ERadHwapi_PrintClimateService, 131143),
                                         NUMBER_OF(ERadHwapiState_ClimateState, 2228235),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Temp, 4096),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Fan, 4097),
                                         NUMBER_OF(ERadHwapiState_ClimateState_Polling_Temp_And_Fan, 4098)),
                         NameOf);

}  // namespace
