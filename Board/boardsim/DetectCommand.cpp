/// @file
/// boardsim detect: a board description for this machine.
#include "Commands.h"
#include "DescriptionText.h"
#include "HwmonScan.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace boardsim {
namespace {

void RunDetect() {
  const char* sysfs = std::getenv("HWAPI_SYSFS");
  const std::string root = sysfs != nullptr && *sysfs != '\0' ? sysfs : "/sys";
  std::fputs(DescribeMachine(ScanHwmon(root), ScanHwmonFans(root)).c_str(), stdout);
}

}  // namespace

void AddDetectCommand(CLI::App& app, Settings& settings) {
  app.add_subcommand("detect", "Print a board description for this machine")->callback([&settings] {
    settings.run = RunDetect;
  });
}

}  // namespace boardsim
