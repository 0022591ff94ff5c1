/// @file
/// From the tree of a TOML document to a checked description.
#pragma once

#include "BoardDescription.h"
#include "TableReader.h"

namespace hwapi::board {

/// Reads a whole description. What is wrong is added to @p problems.
BoardDescription ReadDescription(const TomlValue& root, Problems& problems);

/// Reads the tables of devices: temperature, fan, rf.
void ReadDevices(TableReader& root, BoardDescription& description, Problems& problems);

}  // namespace hwapi::board
