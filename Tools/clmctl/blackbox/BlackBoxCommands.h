/// @file
/// The commands of `clmctl blackbox`.
#pragma once

#include "Commands.h"

#include <optional>
#include <string>

namespace clmctl {

/// What the command line of `blackbox show` says.
struct ShowArguments {
  std::string kind = "board";
  std::string file;
  std::optional<std::string> last;
  bool rows = false;
};
void RunShow(const ShowArguments& arguments, const Settings& settings);

/// What the command line of `blackbox plot` says.
struct PlotArguments {
  std::string png;
  std::string svg;
  std::string file;
  std::string sensors;
  std::string title;
  std::string width;
  std::string height;
};
void RunPlot(const PlotArguments& arguments, const Settings& settings);

}  // namespace clmctl
