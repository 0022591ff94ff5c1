/// @file
/// What every unit version has: the table by which each board is asked everything.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace boardtest {

/// A sensor: its name in the black box, and its number in indications, which radio units share with control boards.
struct NamedSensor {
  std::string name;
  int number;
};
/// The sensors of each type, in the order of an indication. Types that are not there have no group.
using SensorsOfTypes = std::map<std::string, std::vector<NamedSensor>>;

/// The control boards; their processing units come and go, and none is there to begin with.
inline const SensorsOfTypes kKelSensors = {
    {"Kel", {{"KEL_MCU", 6}, {"KEL", 7}, {"KEL_ENV", 8}, {"KEL_VORNIK", 9}, {"KEL_INTAKE", 10}}},
    {"KelOcxo", {{"KEL_OCXO", 11}}},
    {"Dax1", {}},
    {"Dax2", {}},
    {"Dax3", {}},
    {"DaxAll", {}},
    {"Tov", {{"TOV_MCU", 33}, {"TOV", 34}}},
};
inline const SensorsOfTypes kKelfSensors = {
    {"Kel", kKelSensors.at("Kel")}, {"Dax1", {}}, {"Dax2", {}}, {"Dax3", {}}, {"DaxAll", {}},
    {"Tov", kKelSensors.at("Tov")},
};
inline const SensorsOfTypes kKeleSensors = {
    {"Kel", kKelSensors.at("Kel")},
    {"KelOcxo", {{"KEL_OCXO", 11}}},
    {"Dax1", {}},
    {"Dax2", {}},
    {"Dax3", {}},
    {"DaxAll", {}},
    {"KelOcxoDcm", {{"KEL_OCXO_DCM", 57}}},
};
/// The radio units.
inline const SensorsOfTypes kVygSensors = {
    {"Kel", {{"MCU", 6}, {"CLK", 7}, {"FAN", 10}, {"ETH", 8}}},
    {"KelOcxo", {{"OCXO", 11}}},
    {"Dax1", {{"DSP1", 13}, {"DSP2", 14}, {"DSP3", 15}}},
    {"Dax2", {{"DSP1", 13}, {"DSP2", 14}, {"DSP3", 15}}},
    {"Dax3", {{"DSP1", 13}, {"DSP2", 14}, {"DSP3", 15}}},
    {"DaxAll", {{"DSP1", 13}, {"DSP2", 14}, {"DSP3", 15}}},
    {"RFP1", {{"RFP1_RF_ASIC", 35}, {"RFP1_PDRX", 36}, {"RFP1_PA", 37}, {"RFP1_RF_ASIC_PA", 38}}},
    {"RFP2", {{"RFP2_RF_ASIC", 39}, {"RFP2_PDRX", 40}, {"RFP2_PA", 41}, {"RFP2_RF_ASIC_PA", 42}}},
    {"Filter", {{"Filter", 47}}},
    {"Psu", {{"PSU", 56}}},
};
inline const SensorsOfTypes kVydSensors = {
    {"Kel", {{"MCU", 6}, {"MCU_ENV", 48}, {"MIPO", 49}, {"MIPO_ENV", 50}, {"VORNIK", 9}, {"VORNIK_ENV", 51}}},
    {"KelOcxo", {{"OCXO", 11}}},
    {"Dax1", {{"DSP", 13}, {"DSP_ENV", 52}}},
    {"Dax2", {{"DSP", 13}, {"DSP_ENV", 52}}},
    {"Dax3", {{"DSP", 13}, {"DSP_ENV", 52}}},
    {"DaxAll", {{"DSP", 13}, {"DSP_ENV", 52}}},
    {"RFP1", {{"RFP1_RF_ASIC", 35}, {"RFP1_PDRX", 36}, {"RFP1_PA", 37}, {"RFP1_RF_ASIC_ENV", 53}}},
    {"RFP2", {{"RFP2_RF_ASIC", 39}, {"RFP2_PDRX", 40}, {"RFP2_PA", 41}, {"RFP2_RF_ASIC_ENV", 54}}},
    {"RFP3", {{"RFP3_RF_ASIC", 43}, {"RFP3_PDRX", 44}, {"RFP3_PA", 45}, {"RFP3_RF_ASIC_ENV", 55}}},
};
inline const SensorsOfTypes kNoSensors = {};
inline const SensorsOfTypes kZunSensors = {{"Kel", {{"ZUN_MCU", 233}}}};

struct UnitVersion {
  const char* board;  ///< file name of its description, without ".toml"
  const SensorsOfTypes* sensors;
  unsigned fans;
  bool hasBlackBox;
};

inline const UnitVersion kUnitVersions[] = {
    {.board = "kela", .sensors = &kKelSensors, .fans = 2, .hasBlackBox = true},
    {.board = "kelb", .sensors = &kKelSensors, .fans = 2, .hasBlackBox = true},
    {.board = "kelbn", .sensors = &kNoSensors, .fans = 2, .hasBlackBox = true},  // only in the table of fans
    {.board = "kelc", .sensors = &kKelSensors, .fans = 3, .hasBlackBox = true},  // in the smaller cabinet
    {.board = "keld", .sensors = &kKelSensors, .fans = 2, .hasBlackBox = true},  // in the larger one
    {.board = "kele", .sensors = &kKeleSensors, .fans = 0, .hasBlackBox = false},
    {.board = "kelf", .sensors = &kKelfSensors, .fans = 3, .hasBlackBox = true},
    {.board = "kelg", .sensors = &kKelSensors, .fans = 2, .hasBlackBox = true},
    {.board = "kelh", .sensors = &kKelSensors, .fans = 0, .hasBlackBox = true},
    {.board = "pivoa", .sensors = &kVygSensors, .fans = 2, .hasBlackBox = true},
    {.board = "pivob", .sensors = &kVygSensors, .fans = 0, .hasBlackBox = true},
    {.board = "pivoc", .sensors = &kVygSensors, .fans = 2, .hasBlackBox = true},  // not in the table of fans: two
    {.board = "pivod", .sensors = &kVygSensors, .fans = 2, .hasBlackBox = true},
    {.board = "vyda", .sensors = &kVydSensors, .fans = 3, .hasBlackBox = false},
    {.board = "vydj", .sensors = &kVydSensors, .fans = 3, .hasBlackBox = false},
    {.board = "vyea", .sensors = &kVydSensors, .fans = 3, .hasBlackBox = false},
    {.board = "vyga", .sensors = &kVygSensors, .fans = 2, .hasBlackBox = false},
    {.board = "zun", .sensors = &kZunSensors, .fans = 0, .hasBlackBox = true},
};

}  // namespace boardtest
