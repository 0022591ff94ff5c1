/// @file
/// clmctl blackbox: show, plot, store, store-file, reset-info.
#include "BlackBoxCommands.h"

#include "BlackBoxRequests.h"
#include "CommandError.h"
#include "Output.h"
#include "ResetNames.h"
#include "Screen.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>

namespace clmctl {
namespace {

/// What the command line of `blackbox store-file` says.
struct StoreFileArguments {
  std::string source;
  std::optional<std::string> name;
  std::string keep = "2";
};

void RunStore(const Settings& settings) {
  RequestStore(Client(), settings.timeout);
  if (settings.json) {
    WriteJson({{"handled", true}});
  } else {
    WriteLine("the service has handled the request to write the files of the black box");
  }
}

void RunStoreFile(const StoreFileArguments& arguments, const Settings& settings) {
  const SApiBlackboxStoreFileReq request =
      StoreFileRequest(arguments.source, arguments.name, ParseNumber(arguments.keep, "number of older copies"));
  const u32 status = RequestStoreFile(Client(), request, settings.timeout).status;
  if (settings.json) {
    WriteJson({{"source", arguments.source},
               {"name", arguments.name ? nlohmann::ordered_json(*arguments.name) : nlohmann::ordered_json(nullptr)},
               {"older_copies", request.numOfPreviousFiles},
               {"stored", status == EStatus_NoError},
               {"status", status}});
  } else if (status == EStatus_NoError) {
    WriteLine(Printable(arguments.source) + " is stored in the black box");
  }
  if (status != EStatus_NoError) {
    throw CommandError(ExitCode::Refused, "the service did not store " + Printable(arguments.source) + " (status " +
                                              std::to_string(status) +
                                              "): is it a file in the daemon's own file system, and is there room in "
                                              "the flash? See the daemon's log");
  }
}

void RunResetInfo(const Settings& settings) {
  const SApiGetBlackboxResetInfoResp answer = RequestResetInfo(Client(), settings.timeout);
  const std::string category = ResetNameText(ResetCategories(), answer.reset_reason.category);
  const std::string info = ExtendedInfoOf(answer.reset_reason);
  if (settings.json) {
    WriteJson({{"category", category},
               {"category_number", static_cast<u32>(answer.reset_reason.category)},
               {"extended_info", info},
               {"board", answer.target_board},
               {"cpu", answer.target_cpu},
               {"status", static_cast<u32>(answer.status)}});
  } else {
    WriteLine("Category              " + category);
    WriteLine("Extended information  " + (info.empty() ? "-" : Printable(info)));
  }
  if (answer.status != EStatus_NoError) {
    throw CommandError(ExitCode::Refused, "the service answered with status " + std::to_string(answer.status));
  }
}

CLI::App* AddCommand(CLI::App& group, Settings& settings, const char* name, const char* text,
                     std::function<void()> run) {
  CLI::App* command = group.add_subcommand(name, text);
  command->callback([&settings, run = std::move(run)] { settings.run = run; });
  return command;
}

void AddShow(CLI::App& group, Settings& settings) {
  const auto arguments = std::make_shared<ShowArguments>();
  CLI::App* show = AddCommand(group, settings, "show", "Show a file of the black box",
                              [&settings, arguments] { RunShow(*arguments, settings); });
  show->add_option("KIND", arguments->kind, "board, trace or config")->capture_default_str();
  show->add_option("--file", arguments->file, "A file of this machine instead of the running board's");
  show->add_flag("--rows", arguments->rows, "Every row of the trace instead of what it comes to");
  show->add_option("--last", arguments->last, "Look at the newest so many rows of the trace only, 1 or more");
}

void AddPlot(CLI::App& group, Settings& settings) {
  const auto arguments = std::make_shared<PlotArguments>();
  CLI::App* plot = AddCommand(group, settings, "plot", "Draw the trace: on the terminal, or as a picture",
                              [&settings, arguments] { RunPlot(*arguments, settings); });
  CLI::Option* png = plot->add_option("--png", arguments->png, "Picture to write");
  plot->add_option("--svg", arguments->svg, "Picture to write")->excludes(png);
  plot->add_option("--file", arguments->file, "A trace file of this machine instead of the running board's");
  plot->add_option("--sensors", arguments->sensors, "Sensors and fans to draw: NAME,NAME,...");
  plot->add_option("--title", arguments->title, "Title; otherwise the board, or the file");
  plot->add_option("--width", arguments->width, "Pixels of the picture, or characters on the terminal");
  plot->add_option("--height", arguments->height, "Likewise");
}

void AddRequests(CLI::App& group, Settings& settings) {
  AddCommand(group, settings, "store", "Let the service write the files of the black box",
             [&settings] { RunStore(settings); });
  AddCommand(group, settings, "reset-info", "Why the board was last reset", [&settings] { RunResetInfo(settings); });
  const auto arguments = std::make_shared<StoreFileArguments>();
  CLI::App* store = AddCommand(group, settings, "store-file", "Store a copy of a file in the black box",
                               [&settings, arguments] { RunStoreFile(*arguments, settings); });
  store->add_option("SRC", arguments->source, "Path of the file in the daemon's own file system")->required();
  store->add_option("--as", arguments->name, "Name of the copy; otherwise that of the file");
  store->add_option("--keep", arguments->keep, "Older copies of that name that may stay: 0 to 2")
      ->capture_default_str();
}

}  // namespace

void AddBlackBoxCommands(CLI::App& app, Settings& settings) {
  CLI::App* group = app.add_subcommand("blackbox", "The board's black box: its files and the requests about it");
  group->require_subcommand(1);
  AddShow(*group, settings);
  AddPlot(*group, settings);
  AddRequests(*group, settings);
}

}  // namespace clmctl
