#include "ConfigFile.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr ConfigKey kKeys[] = {
    {.comment = "# temperature log for blackbox", .name = "temp", .title = "Trace", .key = "trace_file"},
    {.comment = "# alarm log for blackbox", .name = "alarm", .title = "Alarm log", .key = "alarm_file"},
    {.comment = "# sfp log for blackbox", .name = "sfp", .title = "SFP log", .key = "sfp_file"},
    {.comment = "# blackbox data file", .name = "blackbox", .title = "Board file", .key = "board_file"},
};
constexpr std::size_t kLines = 2 * std::size(kKeys);

}  // namespace

std::span<const ConfigKey> ConfigKeys() { return kKeys; }

ConfigFile ParseConfigFile(std::string_view text) {
  const FileLines source(text);
  ConfigFile config;
  config.paths.resize(std::size(kKeys));
  const auto problem = [&config](std::size_t index, const std::string& what) {
    config.problems.push_back({index + 1, what});
  };
  for (std::size_t i = 0; i < std::max(source.lines.size(), kLines); ++i) {
    const std::string_view line = i < source.lines.size() ? source.lines[i] : std::string_view();
    if (i >= kLines) {
      problem(i, "stands behind the end of the settings: " + Quoted(line));
      continue;
    }
    const ConfigKey& key = kKeys[i / 2];
    const bool comment = i % 2 == 0;
    const std::string beginning = comment ? std::string(key.comment) : std::string(key.name) + "=";
    if (comment ? line != beginning : !line.starts_with(beginning)) {
      problem(i, "should " + std::string(comment ? "be " : "begin with ") + Quoted(beginning) + ", is " + Quoted(line));
    }
  }
  for (std::size_t i = 0; i < std::size(kKeys); ++i) {
    const std::string beginning = std::string(kKeys[i].name) + "=";
    const auto line = std::find_if(source.lines.begin(), source.lines.end(), [&beginning](std::string_view candidate) {
      return candidate.starts_with(beginning);
    });
    if (line != source.lines.end()) config.paths[i] = std::string(line->substr(beginning.size()));
  }
  if (source.cut) problem(source.lines.size() - 1, "is cut off: it has no line end");
  return config;
}

}  // namespace clmctl
