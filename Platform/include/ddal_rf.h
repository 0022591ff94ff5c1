/// @file
/// RF chips and chains.
#pragma once

#include "GloTypes.h"

/// RF ASIC 0 to 2.
using ddal_rf_asic_id_t = u32;
/// RF chain 0 to 2.
using ddal_rf_chain_id_t = u32;

extern "C" {

/// Reads a register of an RF ASIC.
int ddal_rf_asic_read_reg(ddal_rf_asic_id_t asic, u32 reg, u32* value);
/// Reads the status of an RF chain: 1 is enabled.
int ddal_rf_chain_status_get(ddal_rf_chain_id_t chain, u32* status);

}  // extern "C"
