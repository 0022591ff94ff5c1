/// @file
/// The sensors of every fixed group, in the order in which they are reported.
#pragma once

#include "Sensor.h"

namespace ps::hwapi::common::climate {

inline constexpr Sensor kKelKelSensors[] = {
    {.text = "KEL_MCU", .name = TEMP_SENSOR_KEL_MCU, .device = 0x10000},
    {.text = "KEL", .name = TEMP_SENSOR_KEL, .device = 0x10001},
    {.text = "KEL_ENV", .name = TEMP_SENSOR_KEL_ENV, .device = 0x10002},
    {.text = "KEL_VORNIK", .name = TEMP_SENSOR_KEL_VORNIK, .device = 0x10003},
    {.text = "KEL_INTAKE", .name = TEMP_SENSOR_KEL_INTAKE, .device = 0x10004},
};

inline constexpr Sensor kKelOcxoSensors[] = {
    {.text = "KEL_OCXO", .name = TEMP_SENSOR_KEL_OCXO, .device = 0x10005},
};

inline constexpr Sensor kKelTovSensors[] = {
    {.text = "TOV_MCU", .name = TEMP_SENSOR_TOV_MCU, .device = 0x50000},
    {.text = "TOV", .name = TEMP_SENSOR_TOV, .device = 0x50001},
};

inline constexpr Sensor kKelOcxoDcmSensors[] = {
    {.text = "KEL_OCXO_DCM", .name = TEMP_SENSOR_KEL_OCXO_DCM, .device = 0x80006},
};

/// Reads the environment sensor 0x10007, not the MCU's own 0x10009, under the name "ZUN_MCU".
inline constexpr Sensor kKelZunSensors[] = {
    {.text = "ZUN_MCU", .name = TEMP_SENSOR_ZUN, .device = 0x10007},
};

inline constexpr Sensor kVydKelSensors[] = {
    {.text = "MCU", .name = TEMP_SENSOR_KEL_MCU, .device = 0x60000},
    {.text = "MCU_ENV", .name = TEMP_SENSOR_MCU_ENV, .device = 0x60001},
    {.text = "MIPO", .name = TEMP_SENSOR_MIPO, .device = 0x60002},
    {.text = "MIPO_ENV", .name = TEMP_SENSOR_MIPO_ENV, .device = 0x60003},
    {.text = "VORNIK", .name = TEMP_SENSOR_KEL_VORNIK, .device = 0x60004},
    {.text = "VORNIK_ENV", .name = TEMP_SENSOR_VORNIK_ENV, .device = 0x60005},
};

inline constexpr Sensor kVydOcxoSensors[] = {
    {.text = "OCXO", .name = TEMP_SENSOR_KEL_OCXO, .device = 0x60006},
};

inline constexpr Sensor kVydDaxSensors[] = {
    {.text = "DSP", .name = TEMP_SENSOR_DAX1_DSP1, .device = 0x60010},
    {.text = "DSP_ENV", .name = TEMP_SENSOR_DAX1_DSP1_ENV, .device = 0x60011},
};

inline constexpr Sensor kVydRfp1Sensors[] = {
    {.text = "RFP1_RF_ASIC", .name = TEMP_SENSOR_RFP1_RF_ASIC, .device = 0x60022},
    {.text = "RFP1_PDRX", .name = TEMP_SENSOR_RFP1_PDRX, .device = 0x60024},
    {.text = "RFP1_PA", .name = TEMP_SENSOR_RFP1_PA, .device = 0x60025},
    {.text = "RFP1_RF_ASIC_ENV", .name = TEMP_SENSOR_RFP1_RF_ASIC_ENV, .device = 0x60023},
};

inline constexpr Sensor kVydRfp2Sensors[] = {
    {.text = "RFP2_RF_ASIC", .name = TEMP_SENSOR_RFP2_RF_ASIC, .device = 0x60032},
    {.text = "RFP2_PDRX", .name = TEMP_SENSOR_RFP2_PDRX, .device = 0x60034},
    {.text = "RFP2_PA", .name = TEMP_SENSOR_RFP2_PA, .device = 0x60035},
    {.text = "RFP2_RF_ASIC_ENV", .name = TEMP_SENSOR_RFP2_RF_ASIC_ENV, .device = 0x60033},
};

inline constexpr Sensor kVydRfp3Sensors[] = {
    {.text = "RFP3_RF_ASIC", .name = TEMP_SENSOR_RFP3_RF_ASIC, .device = 0x60042},
    {.text = "RFP3_PDRX", .name = TEMP_SENSOR_RFP3_PDRX, .device = 0x60044},
    {.text = "RFP3_PA", .name = TEMP_SENSOR_RFP3_PA, .device = 0x60045},
    {.text = "RFP3_RF_ASIC_ENV", .name = TEMP_SENSOR_RFP3_RF_ASIC_ENV, .device = 0x60043},
};

/// These boards report their places under the nearest names of the control board: CLK as KEL, FAN as KEL_INTAKE,
/// ETH as KEL_ENV.
inline constexpr Sensor kVygKelSensors[] = {
    {.text = "MCU", .name = TEMP_SENSOR_KEL_MCU, .device = 0x70000},
    {.text = "CLK", .name = TEMP_SENSOR_KEL, .device = 0x70001},
    {.text = "FAN", .name = TEMP_SENSOR_KEL_INTAKE, .device = 0x70002},
    {.text = "ETH", .name = TEMP_SENSOR_KEL_ENV, .device = 0x70003},
};

inline constexpr Sensor kVygOcxoSensors[] = {
    {.text = "OCXO", .name = TEMP_SENSOR_KEL_OCXO, .device = 0x70005},
};

inline constexpr Sensor kVygDaxSensors[] = {
    {.text = "DSP1", .name = TEMP_SENSOR_DAX1_DSP1, .device = 0x70010},
    {.text = "DSP2", .name = TEMP_SENSOR_DAX1_DSP2, .device = 0x70011},
    {.text = "DSP3", .name = TEMP_SENSOR_DAX1_DSP3, .device = 0x70012},
};

inline constexpr Sensor kVygRfp1Sensors[] = {
    {.text = "RFP1_RF_ASIC", .name = TEMP_SENSOR_RFP1_RF_ASIC, .device = 0x70021},
    {.text = "RFP1_PDRX", .name = TEMP_SENSOR_RFP1_PDRX, .device = 0x70022},
    {.text = "RFP1_PA", .name = TEMP_SENSOR_RFP1_PA, .device = 0x70023},
    {.text = "RFP1_RF_ASIC_PA", .name = TEMP_SENSOR_RFP1_RF_ASIC_PA, .device = 0x70025},
};

inline constexpr Sensor kVygRfp2Sensors[] = {
    {.text = "RFP2_RF_ASIC", .name = TEMP_SENSOR_RFP2_RF_ASIC, .device = 0x70031},
    {.text = "RFP2_PDRX", .name = TEMP_SENSOR_RFP2_PDRX, .device = 0x70032},
    {.text = "RFP2_PA", .name = TEMP_SENSOR_RFP2_PA, .device = 0x70033},
    {.text = "RFP2_RF_ASIC_PA", .name = TEMP_SENSOR_RFP2_RF_ASIC_PA, .device = 0x70035},
};

inline constexpr Sensor kVygFilterSensors[] = {
    {.text = "Filter", .name = TEMP_SENSOR_FILTER, .device = 0x70040},
};

inline constexpr Sensor kVygPsuSensors[] = {
    {.text = "PSU", .name = TEMP_SENSOR_PSU, .device = 0x70041},
};

}  // namespace ps::hwapi::common::climate
