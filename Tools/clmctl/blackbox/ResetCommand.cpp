/// @file
/// clmctl reset: the announcement of a reset, which the black box records.
#include "BlackBoxRequests.h"
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "ResetNames.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace clmctl {
namespace {

struct ResetArguments {
  std::string type;
  std::string category;
  std::string info;
  std::string board;
  std::string cpu;
  bool list = false;
};

void PrintNames(const char* kind, std::span<const ResetName> names, bool json) {
  for (const ResetName& row : names) {
    if (json) {
      WriteJson({{"kind", kind}, {"name", row.name}, {"number", row.number}});
    } else {
      WriteLine(std::string(kind) + " " + std::string(row.name) + " " + std::to_string(row.number));
    }
  }
}

void PrintAnswer(const SApiResetResp& answer, const SApi2ResetReq& request, bool json) {
  const std::string type = ResetNameText(ResetTypes(), answer.reset_extra);
  const std::string category = ResetNameText(ResetCategories(), request.reset_reason.category);
  if (json) {
    WriteJson({{"type", type},
               {"type_number", answer.reset_extra},
               {"category", category},
               {"category_number", static_cast<u32>(request.reset_reason.category)},
               {"board", answer.target_board},
               {"cpu", answer.target_cpu},
               {"success_code", answer.success_code}});
  } else {
    WriteLine("the service has answered: " + type + " (" + category + ") of board " +
              std::to_string(answer.target_board) + ", processor " + std::to_string(answer.target_cpu));
    WriteLine(
        "It records only resets of its own board, of its own processor or the FPGA; `clmctl blackbox reset-info` "
        "shows the last one.");
  }
}

void RunReset(const ResetArguments& arguments, const Settings& settings) {
  if (arguments.list) {
    PrintNames("type", ResetTypes(), settings.json);
    PrintNames("category", ResetCategories(), settings.json);
    return;
  }
  if (arguments.type.empty() || arguments.category.empty()) {
    throw CommandError(ExitCode::Usage, "give TYPE and --category; --list shows both");
  }
  SApi2ResetReq request =
      ResetRequest(ParseResetName(ResetTypes(), arguments.type, "reset type"),
                   ParseResetName(ResetCategories(), arguments.category, "category"), arguments.info);
  const Client client;
  request.target_board =
      arguments.board.empty() ? u32{AaSysComNmapGetBoard(client.Address())} : ParseNumber(arguments.board, "board");
  request.target_cpu =
      arguments.cpu.empty() ? u32{AaSysComNmapGetCpu(client.Address())} : ParseNumber(arguments.cpu, "processor");
  const SApiResetResp answer = RequestReset(client, request, settings.timeout);
  PrintAnswer(answer, request, settings.json);
  if (answer.success_code != 0) {
    throw CommandError(ExitCode::Refused, "the service answered with code " + std::to_string(answer.success_code));
  }
}

}  // namespace

void AddResetCommand(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<ResetArguments>();
  CLI::App* reset = app.add_subcommand("reset", "Announce a reset, as the reset service does; nothing is reset");
  reset->add_option("TYPE", arguments->type, "Reset type, e.g. ColdReset, Soft, or its number");
  reset->add_option("--category", arguments->category, "Why: e.g. User, Recovery, or its number");
  reset->add_option("--info", arguments->info, "Extended information, up to 59 bytes");
  reset->add_option("--board", arguments->board, "Board to be reset; the own one when left out");
  reset->add_option("--cpu", arguments->cpu, "Its processor; 0xd4 is the FPGA; the own one when left out");
  reset->add_flag("--list", arguments->list, "List the types and the categories");
  reset->callback(
      [&settings, arguments] { settings.run = [&settings, arguments] { RunReset(*arguments, settings); }; });
}

}  // namespace clmctl
