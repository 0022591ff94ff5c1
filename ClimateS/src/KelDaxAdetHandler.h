/// @file
/// From autodetection indications to the sensor tables of the processing units.
#pragma once

#include "KelDaxUnit.h"

namespace ps::hwapi::common::climate {

struct DaxTables;

/// Decides from each indication which sensor table a slot's unit gets. Service thread only.
class KelDaxAdetHandler {
 public:
  /// The units stay the caller's and outlive the handler.
  KelDaxAdetHandler(KelDaxUnit* dax1, KelDaxUnit* dax2, KelDaxUnit* dax3) : m_dax1(dax1), m_dax2(dax2), m_dax3(dax3) {}
  KelDaxAdetHandler(const KelDaxAdetHandler&) = delete;
  KelDaxAdetHandler& operator=(const KelDaxAdetHandler&) = delete;
  virtual ~KelDaxAdetHandler() = default;

  /// Loads the table of the slot's unit, whatever its state, and empties it again when it is unplugged.
  virtual void HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id, unsigned int state);

  /// @return the unit of that id, its table loaded; null for an id of no processing unit
  KelDaxUnit* ResolveAndInitUnit(unsigned int hw_sw_id, unsigned int unit_id);
  void ChangeDaxStatus(KelDaxUnit* unit, unsigned int unit_id, unsigned int state);

  KelDaxUnit* InitDax1Unit(unsigned int hw_sw_id);
  KelDaxUnit* InitDax2Unit(unsigned int hw_sw_id);
  KelDaxUnit* InitDax3Unit(unsigned int hw_sw_id);
  static bool IsDaxpHwSwId(unsigned int hw_sw_id);
  static bool IsDaxmHwSwId(unsigned int hw_sw_id);

 private:
  static KelDaxUnit* Init(KelDaxUnit* unit, const DaxTables& tables, unsigned int hw_sw_id);

  KelDaxUnit* const m_dax1;
  KelDaxUnit* const m_dax2;
  KelDaxUnit* const m_dax3;
};

}  // namespace ps::hwapi::common::climate
