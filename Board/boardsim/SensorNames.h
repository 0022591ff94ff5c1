/// @file
/// Names of the temperature sensors of all boards by their device ids, for people.
#pragma once

#include "GloTypes.h"

#include <array>
#include <string>
#include <string_view>

namespace boardsim {

struct NamedSensor {
  u32 device;
  std::string_view name;
};

inline constexpr std::array kNamedSensors = {
    NamedSensor{.device = 0x10000, .name = "KEL_MCU"},      NamedSensor{.device = 0x10001, .name = "KEL"},
    NamedSensor{.device = 0x10002, .name = "KEL_ENV"},      NamedSensor{.device = 0x10003, .name = "KEL_VORNIK"},
    NamedSensor{.device = 0x10004, .name = "KEL_INTAKE"},   NamedSensor{.device = 0x10005, .name = "KEL_OCXO"},
    NamedSensor{.device = 0x10007, .name = "ZUN_MCU"},      NamedSensor{.device = 0x50000, .name = "TOV_MCU"},
    NamedSensor{.device = 0x50001, .name = "TOV"},          NamedSensor{.device = 0x60000, .name = "MCU"},
    NamedSensor{.device = 0x60001, .name = "MCU_ENV"},      NamedSensor{.device = 0x60002, .name = "MIPO"},
    NamedSensor{.device = 0x60003, .name = "MIPO_ENV"},     NamedSensor{.device = 0x60004, .name = "VORNIK"},
    NamedSensor{.device = 0x60005, .name = "VORNIK_ENV"},   NamedSensor{.device = 0x60006, .name = "OCXO"},
    NamedSensor{.device = 0x60010, .name = "DSP"},          NamedSensor{.device = 0x60011, .name = "DSP_ENV"},
    NamedSensor{.device = 0x60022, .name = "RFP1_RF_ASIC"}, NamedSensor{.device = 0x60023, .name = "RFP1_RF_ASIC_ENV"},
    NamedSensor{.device = 0x60024, .name = "RFP1_PDRX"},    NamedSensor{.device = 0x60025, .name = "RFP1_PA"},
    NamedSensor{.device = 0x60032, .name = "RFP2_RF_ASIC"}, NamedSensor{.device = 0x60033, .name = "RFP2_RF_ASIC_ENV"},
    NamedSensor{.device = 0x60034, .name = "RFP2_PDRX"},    NamedSensor{.device = 0x60035, .name = "RFP2_PA"},
    NamedSensor{.device = 0x60042, .name = "RFP3_RF_ASIC"}, NamedSensor{.device = 0x60043, .name = "RFP3_RF_ASIC_ENV"},
    NamedSensor{.device = 0x60044, .name = "RFP3_PDRX"},    NamedSensor{.device = 0x60045, .name = "RFP3_PA"},
    NamedSensor{.device = 0x70000, .name = "MCU"},          NamedSensor{.device = 0x70001, .name = "CLK"},
    NamedSensor{.device = 0x70002, .name = "FAN"},          NamedSensor{.device = 0x70003, .name = "ETH"},
    NamedSensor{.device = 0x70005, .name = "OCXO"},         NamedSensor{.device = 0x70010, .name = "DSP1"},
    NamedSensor{.device = 0x70011, .name = "DSP2"},         NamedSensor{.device = 0x70012, .name = "DSP3"},
    NamedSensor{.device = 0x70021, .name = "RFP1_RF_ASIC"}, NamedSensor{.device = 0x70022, .name = "RFP1_PDRX"},
    NamedSensor{.device = 0x70023, .name = "RFP1_PA"},      NamedSensor{.device = 0x70025, .name = "RFP1_RF_ASIC_PA"},
    NamedSensor{.device = 0x70031, .name = "RFP2_RF_ASIC"}, NamedSensor{.device = 0x70032, .name = "RFP2_PDRX"},
    NamedSensor{.device = 0x70033, .name = "RFP2_PA"},      NamedSensor{.device = 0x70035, .name = "RFP2_RF_ASIC_PA"},
    NamedSensor{.device = 0x70040, .name = "Filter"},       NamedSensor{.device = 0x70041, .name = "PSU"},
    NamedSensor{.device = 0x80006, .name = "KEL_OCXO_DCM"},
};

/// @return the sensor's name; "" for a device without one
std::string SensorNameOf(u32 device);

}  // namespace boardsim
