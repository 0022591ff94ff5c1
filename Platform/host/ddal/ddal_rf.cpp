#include "ddal_rf.h"

#include "Export.h"
#include "SimHardware.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

int ReadRf(u32 index, Register SimRfRegisters::*which, u32* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (index >= kSimRfParts) return DDAL_ERR_NO_DEVICE;
  if (const int error = ErrorUnlessRunning()) return error;
  SimRfRegisters part{};
  if (const int error = SimHardware::Own().Read((kSimFile->*&SimRegisters::rf)[index], &part)) return error;
  if (part.present == 0) return SimHardware::Own().Repair();
  *value = part.*which;
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_rf_asic_read_reg(ddal_rf_asic_id_t asic, u32 /*reg*/, u32* value) {
  return ReadRf(asic, &SimRfRegisters::registerValue, value);
}

GARDDAL_API int ddal_rf_chain_status_get(ddal_rf_chain_id_t chain, u32* status) {
  return ReadRf(chain, &SimRfRegisters::chainStatus, status);
}
