/// @file
/// The board file and the configuration file as text for people.
#pragma once

#include "BoardFile.h"
#include "ConfigFile.h"
#include "Screen.h"

#include <string>
#include <vector>

namespace clmctl {

/// @return labels and values, then the history of resets: a table where the screen has room for it
std::vector<std::string> BoardLines(const BoardFile& board, const Screen& screen);
std::vector<std::string> ConfigLines(const ConfigFile& config);

}  // namespace clmctl
