/// @file
/// boardsim plug, unplug, autodet: processing units, and the service that tells of them; the slots of `status`.
#include "BoardDescription.h"
#include "Commands.h"
#include "ControlClient.h"
#include "ProcessingUnits.h"
#include "SimError.h"
#include "UnitValues.h"
#include "ddal_error.h"

#include <cstdio>
#include <memory>
#include <string>

namespace boardsim {
namespace {

struct UnitArguments {
  std::string slot;
  std::string variant;
  std::string state = "Ready";
};

/// @throw SimError (refused) on a board without slots
void RequireSlots() {
  if (HasUnitSlots(hwapi::board::OwnBoard())) return;
  throw SimError(ExitCode::Refused,
                 "this board has no slots for processing units; only boards whose [unit] type is \"Kel\" have them");
}

/// Says what the answer does not let one expect.
void TellWhoKnows(const PlugResp& response) {
  if (response.isOnline == 0) {
    std::fprintf(stderr,
                 "boardsim: note: the autodetection service is offline, so nobody is told now; who registers after "
                 "`boardsim autodet online` will be\n");
  } else if (response.told == 0) {
    std::fprintf(stderr,
                 "boardsim: note: no client is registered with the autodetection service just now; who registers later "
                 "will be told\n");
  }
}

void RunPlug(const UnitArguments& arguments, const Settings& settings) {
  const PlugReq request{.slot = ParseSlot(arguments.slot),
                        .hwSwId = ParseVariant(arguments.variant),
                        .state = ParseUnitState(arguments.state)};
  settings.State().Join();
  RequireSlots();
  const PlugResp response = RequestPlug(request);
  if (response.error != DDAL_OK) throw SimError(ExitCode::Refused, "the simulator knows no slot " + arguments.slot);
  TellWhoKnows(response);
}

void RunUnplug(const UnitArguments& arguments, const Settings& settings) {
  const UnplugReq request{.slot = ParseSlot(arguments.slot)};
  settings.State().Join();
  RequireSlots();
  const PlugResp response = RequestUnplug(request);
  if (response.error != DDAL_OK) {
    const std::string name(kUnitSlots[request.slot].name);
    throw SimError(ExitCode::Refused,
                   "slot " + name + " is empty; `boardsim plug " + name + " VARIANT` puts a unit into it");
  }
  TellWhoKnows(response);
}

void RunAutodet(u32 online, const Settings& settings) {
  settings.State().Join();
  if (RequestAutodet({.online = online}) == DDAL_OK) return;
  throw SimError(ExitCode::Refused,
                 "another process of this board serves the task of the autodetection service; end "
                 "that one first");
}

}  // namespace

void PrintSlots() {
  if (!HasUnitSlots(hwapi::board::OwnBoard())) return;
  const SlotsResp status = RequestSlots();
  std::printf("\nSLOT         UNIT             STATE\n");
  for (std::size_t slot = 0; slot < kUnitSlots.size(); ++slot) {
    const SlotStatus& unit = status.slots[slot];
    const std::string text = unit.present != 0 ? UnitText(unit.hwSwId) : "-";
    const std::string state = unit.present != 0 ? UnitStateText(unit.state) : "empty";
    std::printf("%-12s %-16s %s\n", kUnitSlots[slot].name.data(), text.c_str(), state.c_str());
  }
}

void AddUnitCommands(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<UnitArguments>();
  const auto addSlot = [arguments](CLI::App* command) {
    command->add_option("SLOT", arguments->slot, "Dax1, Dax2 or Dax3, or its number")->required();
  };
  CLI::App* plug = app.add_subcommand("plug", "Put a processing unit into a slot, or let the one in it change");
  addSlot(plug);
  plug->add_option("VARIANT", arguments->variant, "basic, m or p, or a hw_sw_id such as 0x16000")->required();
  plug->add_option("STATE", arguments->state,
                   "What autodetection says of it: Ready, UnInitialized, UnPlugged, SwUpgrade, Timeout, Hiz, Sleep, "
                   "Plugged, Unknown, or a number")
      ->capture_default_str();
  plug->callback([&settings, arguments] { settings.run = [&settings, arguments] { RunPlug(*arguments, settings); }; });
  CLI::App* unplug = app.add_subcommand("unplug", "Pull the processing unit out of a slot");
  addSlot(unplug);
  unplug->callback(
      [&settings, arguments] { settings.run = [&settings, arguments] { RunUnplug(*arguments, settings); }; });

  CLI::App* autodet = app.add_subcommand("autodet", "Let the autodetection service go or come back");
  autodet->require_subcommand(1);
  const auto add = [&](const char* name, const char* text, u32 online) {
    autodet->add_subcommand(name, text)->callback([&settings, online] {
      settings.run = [&settings, online] { RunAutodet(online, settings); };
    });
  };
  add("offline", "It goes, as when it ends", 0);
  add("online", "It comes back and looks at the slots; who wants to be told registers again", 1);
}

}  // namespace boardsim
