/// @file
/// Which sensor groups each hardware version of a board has.
#pragma once

#include "HwapiUnit.h"
#include "SensorTables.h"
#include "messages/TempMeas.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace ps::hwapi::common::climate {

/// The places of a board that can have a sensor group, in the order in which the groups are released.
enum class GroupSlot : std::size_t { Kel, Ocxo, Tov, Dax, Rfp1, Rfp2, Rfp3, Filter, Psu, OcxoDcm };
inline constexpr std::size_t kGroupSlots = 10;

/// Which slot serves a sensor type. Types without a row are served by none.
struct SlotOfType {
  ETempSensorType sensorType;
  GroupSlot slot;
};
inline constexpr SlotOfType kSlotOfType[] = {
    {.sensorType = ETempSensorType_Kel, .slot = GroupSlot::Kel},
    {.sensorType = ETempSensorType_KelOcxo, .slot = GroupSlot::Ocxo},
    {.sensorType = ETempSensorType_Dax1, .slot = GroupSlot::Dax},
    {.sensorType = ETempSensorType_Dax2, .slot = GroupSlot::Dax},
    {.sensorType = ETempSensorType_Dax3, .slot = GroupSlot::Dax},
    {.sensorType = ETempSensorType_DaxAll, .slot = GroupSlot::Dax},
    {.sensorType = ETempSensorType_Tov, .slot = GroupSlot::Tov},
    {.sensorType = ETempSensorType_RFP1, .slot = GroupSlot::Rfp1},
    {.sensorType = ETempSensorType_RFP2, .slot = GroupSlot::Rfp2},
    {.sensorType = ETempSensorType_RFP3, .slot = GroupSlot::Rfp3},
    {.sensorType = ETempSensorType_Filter, .slot = GroupSlot::Filter},
    {.sensorType = ETempSensorType_Psu, .slot = GroupSlot::Psu},
    {.sensorType = ETempSensorType_KelOcxoDcm, .slot = GroupSlot::OcxoDcm},
};

/// A group of a board.
struct GroupOfBoard {
  GroupSlot slot;
  std::span<const Sensor> sensors;  ///< empty: the plug-in processing units
};

/// The groups of some unit versions, in the order in which they are built and registered with the black box.
struct BoardGroups {
  std::span<const EUnitVersion> versions;
  std::span<const GroupOfBoard> groups;
  bool registerWithBlackBox = true;  ///< otherwise the black box never learns the sensors' names
  bool feedPsuSpi = false;           ///< the power supply's SPI link has to be fed
};

inline constexpr EUnitVersion kKelVersions[] = {EUnitVersion_Kela, EUnitVersion_Kelb, EUnitVersion_Kelc,
                                                EUnitVersion_Keld, EUnitVersion_Kelh, EUnitVersion_Kelg};
inline constexpr GroupOfBoard kKelGroups[] = {
    {.slot = GroupSlot::Kel, .sensors = kKelKelSensors},
    {.slot = GroupSlot::Ocxo, .sensors = kKelOcxoSensors},
    {.slot = GroupSlot::Dax, .sensors = {}},
    {.slot = GroupSlot::Tov, .sensors = kKelTovSensors},
};

inline constexpr EUnitVersion kKelfVersions[] = {EUnitVersion_Kelf};
inline constexpr GroupOfBoard kKelfGroups[] = {
    {.slot = GroupSlot::Kel, .sensors = kKelKelSensors},
    {.slot = GroupSlot::Dax, .sensors = {}},
    {.slot = GroupSlot::Tov, .sensors = kKelTovSensors},
};

inline constexpr EUnitVersion kKeleVersions[] = {EUnitVersion_Kele};
inline constexpr GroupOfBoard kKeleGroups[] = {
    {.slot = GroupSlot::Kel, .sensors = kKelKelSensors},
    {.slot = GroupSlot::Ocxo, .sensors = kKelOcxoSensors},
    {.slot = GroupSlot::Dax, .sensors = {}},
    {.slot = GroupSlot::OcxoDcm, .sensors = kKelOcxoDcmSensors},
};

inline constexpr EUnitVersion kVygVersions[] = {EUnitVersion_Pivoa, EUnitVersion_Pivob, EUnitVersion_Vyga,
                                                EUnitVersion_Pivoc, EUnitVersion_Pivod};
inline constexpr GroupOfBoard kVygGroups[] = {
    {.slot = GroupSlot::Kel, .sensors = kVygKelSensors},   {.slot = GroupSlot::Ocxo, .sensors = kVygOcxoSensors},
    {.slot = GroupSlot::Dax, .sensors = kVygDaxSensors},   {.slot = GroupSlot::Rfp1, .sensors = kVygRfp1Sensors},
    {.slot = GroupSlot::Rfp2, .sensors = kVygRfp2Sensors}, {.slot = GroupSlot::Filter, .sensors = kVygFilterSensors},
    {.slot = GroupSlot::Psu, .sensors = kVygPsuSensors},
};

inline constexpr EUnitVersion kVydVersions[] = {EUnitVersion_Vyda, EUnitVersion_Vydj, EUnitVersion_Vyea};
inline constexpr GroupOfBoard kVydGroups[] = {
    {.slot = GroupSlot::Kel, .sensors = kVydKelSensors},   {.slot = GroupSlot::Ocxo, .sensors = kVydOcxoSensors},
    {.slot = GroupSlot::Dax, .sensors = kVydDaxSensors},   {.slot = GroupSlot::Rfp1, .sensors = kVydRfp1Sensors},
    {.slot = GroupSlot::Rfp2, .sensors = kVydRfp2Sensors}, {.slot = GroupSlot::Rfp3, .sensors = kVydRfp3Sensors},
};

inline constexpr EUnitVersion kZunVersions[] = {EUnitVersion_Zun};
inline constexpr GroupOfBoard kZunGroups[] = {{.slot = GroupSlot::Kel, .sensors = kKelZunSensors}};

inline constexpr BoardGroups kBoardGroups[] = {
    {.versions = kKelVersions, .groups = kKelGroups},
    {.versions = kKelfVersions, .groups = kKelfGroups},
    {.versions = kKeleVersions, .groups = kKeleGroups, .registerWithBlackBox = false},
    {.versions = kVygVersions, .groups = kVygGroups, .feedPsuSpi = true},
    {.versions = kVydVersions, .groups = kVydGroups, .registerWithBlackBox = false},
    {.versions = kZunVersions, .groups = kZunGroups},
};

/// @return the groups of a unit version; null for one without
constexpr const BoardGroups* FindBoardGroups(EUnitVersion version) {
  for (const BoardGroups& board : kBoardGroups) {
    if (std::find(board.versions.begin(), board.versions.end(), version) != board.versions.end()) return &board;
  }
  return nullptr;
}
static_assert(FindBoardGroups(EUnitVersion_Kelbn) == nullptr);

}  // namespace ps::hwapi::common::climate
