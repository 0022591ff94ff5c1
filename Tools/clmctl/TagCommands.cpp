/// @file
/// clmctl tag: get, set, watch.
#include "AaConfig.h"
#include "Client.h"
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "Signals.h"
#include "TagObserver.h"
#include "TagValue.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

namespace clmctl {
namespace {

struct TagArguments {
  std::string name;
  std::string value;
  std::string count;
};

bool Print(const std::string& name, const TagValue& value, bool json) {
  if (!json) return WriteLine(name + " " + value.Text());
  nlohmann::ordered_json object;
  object["tag"] = name;
  object["number"] = value.Number() ? nlohmann::ordered_json(*value.Number()) : nullptr;
  object["text"] = value.Readable() ? nlohmann::ordered_json(*value.Readable()) : nullptr;
  return WriteJson(object);
}

void RunGet(const TagArguments& arguments, const Settings& settings) {
  RequireBoard();
  void* value = nullptr;
  const i32 error = AaConfigTagGet(arguments.name.c_str(), &value);
  if (error != 0) {
    throw CommandError(ExitCode::Refused, error == ENOENT
                                              ? "the tag " + arguments.name + " has no value"
                                              : "cannot read the tag " + arguments.name + ": " + std::strerror(error));
  }
  std::string bytes = value != nullptr ? static_cast<const char*>(value) : "";
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  // A number is told apart by its size only, which the text does not show.
  u32 number = 0;
  if (AaConfigTagGetU32(arguments.name.c_str(), &number) == 0) {
    bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
  }
  Print(arguments.name, TagValue(bytes), settings.json);
}

void RunSet(const TagArguments& arguments, const Settings& settings) {
  RequireBoard();
  const TagValue value = TagValue::FromArgument(arguments.value);
  const i32 error =
      AaConfigTagPublicSet(arguments.name.c_str(), value.Bytes().data(), static_cast<u32>(value.Bytes().size()));
  if (error != 0) {
    throw CommandError(ExitCode::Refused, "cannot set the tag " + arguments.name + ": " + std::strerror(error) +
                                              "; a name has no '/', a value at most " +
                                              std::to_string(AACONFIG_TAG_MAX_SIZE) + " bytes");
  }
  if (settings.json) Print(arguments.name, value, settings.json);
}

void RunWatch(const TagArguments& arguments, const Settings& settings) {
  u32 left = arguments.count.empty() ? 0 : ParseCount(arguments.count, "--count");
  BlockSignals();
  const Client client;
  ForwardSignals(client.Address());
  ObserveTag(arguments.name, client.Address());
  while (true) {
    const Message msg = client.ReceiveUntil(Client::Clock::time_point::max());
    if (AaSysComMsgGetId(msg.get()) == CLMCTL_SIGNAL_IND_MSG && IsStopSignal(msg.get())) return;
    if (AaSysComMsgGetId(msg.get()) != CLMCTL_TAG_IND_MSG) continue;
    const u32 size = AaSysComMsgGetPayloadSize(msg.get());
    const auto* payload = static_cast<const char*>(AaSysComMsgGetPayload(msg.get()));
    if (!Print(arguments.name, TagValue(std::string(size != 0 ? payload : "", size)), settings.json)) return;
    if (left != 0 && --left == 0) return;
  }
}

}  // namespace

void AddTagCommands(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<TagArguments>();
  CLI::App* tag = app.add_subcommand("tag", "Public configuration tags of the board");
  tag->require_subcommand(1);

  const auto add = [&](const char* name, const char* text, std::function<void()> run) {
    CLI::App* command = tag->add_subcommand(name, text);
    command->add_option("NAME", arguments->name, "Name of the tag, e.g. app.hwapi.online.4b6")->required();
    command->callback([&settings, run = std::move(run)] { settings.run = run; });
    return command;
  };
  add("get", "Show a tag's value", [&settings, arguments] { RunGet(*arguments, settings); });
  add("set", "Set a tag for every process of the board", [&settings, arguments] { RunSet(*arguments, settings); })
      ->add_option("VALUE", arguments->value, "A number (4 bytes), or text; text:... is text whatever it looks like")
      ->required();
  add("watch", "Show a tag's value and each new one until ^C", [&settings, arguments] {
    RunWatch(*arguments, settings);
  })->add_option("--count", arguments->count, "End after so many values");
}

}  // namespace clmctl
