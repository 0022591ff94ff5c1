/// @file
/// boardsim detect: a board description for this machine.
#include "Commands.h"
#include "DescriptionText.h"
#include "HwmonScan.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace boardsim {
namespace {

void RunDetect(RunBy runBy) {
  const char* sysfs = std::getenv("HWAPI_SYSFS");
  const std::string root = sysfs != nullptr && *sysfs != '\0' ? sysfs : "/sys";
  std::fputs(DescribeMachine(ScanHwmon(root), ScanHwmonFans(root), runBy).c_str(), stdout);
}

}  // namespace

void AddDetectCommand(CLI::App& app, Settings& settings) {
  const auto alone = std::make_shared<bool>(false);
  CLI::App* detect = app.add_subcommand("detect", "Print a board description for this machine");
  constexpr const char* kText =
      "For the installed service without boardsim: its group may send, and there is no black box, with which its start "
      "would wait for the board's reset service";
  detect->add_flag("--service-alone", *alone, kText);
  detect->callback(
      [&settings, alone] { settings.run = [alone] { RunDetect(*alone ? RunBy::ServiceAlone : RunBy::Boardsim); }; });
}

}  // namespace boardsim
