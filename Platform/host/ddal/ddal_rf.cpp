#include "ddal_rf.h"

#include "Export.h"
#include "SimHardware.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

int ReadRf(u32 index, Register SimRfRegisters::*which, u32* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (index >= kSimRfParts) return DDAL_ERR_NO_DEVICE;
  int error = DDAL_OK;
  const SimRegisters* registers = RunningRegisters(&error);
  if (registers == nullptr) return error;
  *value = registers->rf[index].*which;
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_rf_asic_read_reg(ddal_rf_asic_id_t asic, u32 /*reg*/, u32* value) {
  return ReadRf(asic, &SimRfRegisters::registerValue, value);
}

GARDDAL_API int ddal_rf_chain_status_get(ddal_rf_chain_id_t chain, u32* status) {
  return ReadRf(chain, &SimRfRegisters::chainStatus, status);
}
