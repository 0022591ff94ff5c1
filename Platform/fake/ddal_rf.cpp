#include "ddal_rf.h"

#include "Internal.h"
#include "fake/Hardware.h"

#include <map>
#include <utility>

namespace fake {
namespace {

using namespace internal;

struct Rf {
  std::map<std::pair<ddal_rf_asic_id_t, u32>, u32> registers;
  std::map<ddal_rf_asic_id_t, u32> asics;  ///< value of every register that is not set for itself
  std::map<ddal_rf_chain_id_t, u32> chains;
};

Rf& TheRf() {
  static auto& rf = *new Rf;
  return rf;
}

}  // namespace

void SetRfRegister(ddal_rf_asic_id_t asic, u32 reg, u32 value) {
  const Lock lock;
  TheRf().registers[{asic, reg}] = value;
}

void SetRfAsic(ddal_rf_asic_id_t asic, u32 value) {
  const Lock lock;
  TheRf().asics[asic] = value;
}

void SetRfChain(ddal_rf_chain_id_t chain, u32 status) {
  const Lock lock;
  TheRf().chains[chain] = status;
}

void internal::ResetRf() { TheRf() = Rf(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

int ddal_rf_asic_read_reg(ddal_rf_asic_id_t asic, u32 reg, u32* value) {
  const Lock lock;
  if (const auto failure = Record({"ddal_rf_asic_read_reg", asic, reg})) return *failure;
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (const auto found = TheRf().registers.find({asic, reg}); found != TheRf().registers.end()) {
    *value = found->second;
    return DDAL_OK;
  }
  const auto found = TheRf().asics.find(asic);
  if (found == TheRf().asics.end()) return DDAL_ERR_NO_DEVICE;
  *value = found->second;
  return DDAL_OK;
}

int ddal_rf_chain_status_get(ddal_rf_chain_id_t chain, u32* status) {
  const Lock lock;
  if (const auto failure = Record({"ddal_rf_chain_status_get", chain})) return *failure;
  if (status == nullptr) return DDAL_ERR_INVALID;
  const auto found = TheRf().chains.find(chain);
  if (found == TheRf().chains.end()) return DDAL_ERR_NO_DEVICE;
  *status = found->second;
  return DDAL_OK;
}

}  // extern "C"
