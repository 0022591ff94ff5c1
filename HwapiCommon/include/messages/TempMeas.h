/// @file
/// Temperature measurement: request, response, indication, and the poll timer's own message.
#pragma once

#include "AaSysCom.h"

#include <cstddef>

enum ETempMeasCommand : u32 { ETempMeasCommand_Start = 0, ETempMeasCommand_Stop = 1 };

enum ETempMeasResolution : u32 { ETempMeasResolution_Normal = 0, ETempMeasResolution_High = 1 };

/// Outcome of a measurement request. There is no value 2.
enum ETempMeasError : u32 {
  ETempMeasError_NoError = 0,
  ETempMeasError_Resolution = 1,
  ETempMeasError_SensorType = 3,
  ETempMeasError_Command = 4,
  ETempMeasError_Interval = 5,
  ETempMeasError_AlreadyStarted = 6,
  ETempMeasError_NoResponse = 7
};

/// Which sensors a request means.
enum ETempSensorType : u32 {
  ETempSensorType_None = 0,
  ETempSensorType_Dax1 = 1,
  ETempSensorType_Dax2 = 2,
  ETempSensorType_Dax3 = 3,
  ETempSensorType_DaxAll = 4,
  ETempSensorType_Borz = 5,
  ETempSensorType_Kel = 6,
  ETempSensorType_KelOcxo = 7,
  ETempSensorType_Tov = 8,
  ETempSensorType_RFP1 = 9,
  ETempSensorType_RFP2 = 10,
  ETempSensorType_RFP3 = 11,
  ETempSensorType_Filter = 12,
  ETempSensorType_Psu = 13,
  ETempSensorType_KelOcxoDcm = 14,
  ETempSensorType_Mipo1 = 15,
  ETempSensorType_Mipo2 = 16,
  ETempSensorType_Nusk1 = 17,
  ETempSensorType_Nusk2 = 18,
  ETempSensorType_Nusk3 = 19,
  ETempSensorType_Nusk4 = 20,
  ETempSensorType_Nusk5 = 21,
  ETempSensorType_Nusk6 = 22,
  ETempSensorType_Nusk7 = 23,
  ETempSensorType_Nusk8 = 24,
  ETempSensorType_Nusk9 = 25,
  ETempSensorType_Nusk10 = 26,
  ETempSensorType_Nusk11 = 27,
  ETempSensorType_Nusk12 = 28,
  ETempSensorType_Nusk13 = 29,
  ETempSensorType_Nusk14 = 30,
  ETempSensorType_Nusk15 = 31,
  ETempSensorType_Nusk16 = 32,
  ETempSensorType_NuskAll = 33,
  ETempSensorType_Odra1 = 34,
  ETempSensorType_Odra2 = 35,
  ETempSensorType_OdraAll = 36,
  ETempSensorType_Rukta1 = 37,
  ETempSensorType_Rukta2 = 38,
  ETempSensorType_Rukta3 = 39,
  ETempSensorType_Rukta4 = 40,
  ETempSensorType_RuktaAll = 41,
  ETempSensorType_Sivk = 42,
  ETempSensorType_Nusk = 43,
  ETempSensorType_Backplane = 44
};

/// API_TEMP_MEAS_REQ_MSG.
struct SApiTempMeasReq {
  ETempMeasCommand command;
  ETempSensorType sensorType;
  u32 interval;  ///< milliseconds, 900 to 4294967; for a start only
  ETempMeasResolution resolution;
  TAaSysComSicad clientAddr;  ///< where indications go; 0: to the sender of the request
};
static_assert(sizeof(SApiTempMeasReq) == 20);
static_assert(offsetof(SApiTempMeasReq, sensorType) == 4);
static_assert(offsetof(SApiTempMeasReq, interval) == 8);
static_assert(offsetof(SApiTempMeasReq, resolution) == 12);
static_assert(offsetof(SApiTempMeasReq, clientAddr) == 16);

/// API_TEMP_MEAS_RESP_MSG.
struct SApiTempMeasResp {
  ETempMeasCommand command;
  ETempSensorType sensorType;
  ETempMeasError error;
};
static_assert(sizeof(SApiTempMeasResp) == 12);
static_assert(offsetof(SApiTempMeasResp, sensorType) == 4);
static_assert(offsetof(SApiTempMeasResp, error) == 8);

/// API_TEMPERATURE_POLL_TIMER_IND_MSG: the service's own timer message; its sender is the client of the measurement.
struct SApiTemperaturePollTimerInd {
  ETempSensorType sensorType;
};
static_assert(sizeof(SApiTemperaturePollTimerInd) == 4);

/// One sensor of an indication.
struct STempMeasInfo {
  u32 unit_name;          ///< ETempSensorName
  float unit_temp[5];     ///< degrees Celsius; only the first is used
  u32 temp_sensor_state;  ///< 1: valid reading, 0: failed
  u32 i2c_fault_id;       ///< 0, or the absolute value of the driver's error code
};
static_assert(sizeof(STempMeasInfo) == 32);
static_assert(offsetof(STempMeasInfo, unit_temp) == 4);
static_assert(offsetof(STempMeasInfo, temp_sensor_state) == 24);
static_assert(offsetof(STempMeasInfo, i2c_fault_id) == 28);

/// API_TEMP_MEAS_IND_MSG; holds numberOfSensors elements.
struct SApiTempMeasInd {
  ETempSensorType sensorType;
  u32 numberOfSensors;
  STempMeasInfo tempMeasurementInfo[1];
};
static_assert(sizeof(SApiTempMeasInd) == 40);
static_assert(offsetof(SApiTempMeasInd, numberOfSensors) == 4);
static_assert(offsetof(SApiTempMeasInd, tempMeasurementInfo) == 8);
