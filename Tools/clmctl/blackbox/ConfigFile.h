/// @file
/// The configuration file of the black box: where its other files are. Its grammar: doc/configuration-file.md.
#pragma once

#include "FileLines.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// A setting that a configuration file has.
struct ConfigKey {
  std::string_view comment;  ///< the line before it
  std::string_view name;     ///< before the '='
  std::string_view title;    ///< for people
  std::string_view key;      ///< of JSON
};

/// @return the settings in the order of the file
std::span<const ConfigKey> ConfigKeys();

struct ConfigFile {
  std::vector<std::optional<std::string>> paths;  ///< one for each of ConfigKeys(); nothing where it is missing
  std::vector<FileProblem> problems;
};

/// Reads what can be read of any text.
ConfigFile ParseConfigFile(std::string_view text);

}  // namespace clmctl
