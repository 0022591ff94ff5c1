/// @file
/// clmctl send: one raw message, and what comes back.
#include "Client.h"
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace clmctl {
namespace {

struct SendArguments {
  std::string to;
  std::string id;
  std::string hex;
  std::string sender;
  bool otherEndian = false;
  std::string expect = "1";
};

TAaSysComSicad Receiver(const std::string& text) {
  return text.find('/') != std::string::npos ? ParseAddress(text) : Client::AddressOf(ParseTask(text));
}

bool Print(void* msg, bool json) {
  const u32 size = AaSysComMsgGetPayloadSize(msg);
  const std::string id = FormatId(AaSysComMsgGetId(msg));
  const std::string sender = FormatAddress(AaSysComMsgGetSender(msg));
  const std::string hex = FormatHex(AaSysComMsgGetPayload(msg), size);
  if (!json) return WriteLine(id + " " + sender + " " + (hex.empty() ? "-" : hex));
  nlohmann::ordered_json object;
  object["id"] = id;
  object["sender"] = sender;
  object["payload_bytes"] = size;
  object["payload_hex"] = hex;
  return WriteJson(object);
}

void RunSend(const SendArguments& arguments, const Settings& settings) {
  const u32 id = ParseNumber(arguments.id, "message id");
  const std::vector<u8> payload = ParseHex(arguments.hex);
  const u32 expected = ParseNumber(arguments.expect, "number of messages");
  const u32 task = arguments.sender.empty() ? 0 : ParseTask(arguments.sender);
  const TAaSysComSicad receiver = Receiver(arguments.to);

  const Client client(task);
  Message msg = client.Create(id, payload.data(), static_cast<u32>(payload.size()), receiver);
  if (arguments.otherEndian) AaSysComMsgSetEndianSame(msg.get(), GLO_FALSE);
  client.Send(std::move(msg));

  const auto deadline = Client::Clock::now() + settings.timeout;
  for (u32 received = 0; received < expected; ++received) {
    const Message answer = client.ReceiveUntil(deadline);
    if (answer == nullptr) {
      throw CommandError(ExitCode::Unreachable, std::to_string(received) + " of " + std::to_string(expected) +
                                                    " messages came back within " +
                                                    std::to_string(settings.timeout.count()) +
                                                    "ms; --expect and --timeout say how many and how long");
    }
    if (!Print(answer.get(), settings.json)) return;
  }
}

}  // namespace

void AddSendCommand(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<SendArguments>();
  CLI::App* send = app.add_subcommand("send", "Send one raw message; prints what comes back as ID SENDER HEX");
  send->add_option("--to", arguments->to, "Receiving task: 0x4b6, temperature, or BOARD/CPU/TASK")->required();
  send->add_option("--id", arguments->id, "Message id")->required();
  send->add_option("--hex", arguments->hex, "Payload, e.g. 0000000006000000");
  send->add_option("--sender", arguments->sender, "Task to send as; any free one when left out");
  send->add_flag("--other-endian", arguments->otherEndian, "Say that the payload is in the other byte order");
  send->add_option("--expect", arguments->expect, "Messages to wait for; 0 waits for none")->capture_default_str();
  send->callback([&settings, arguments] { settings.run = [&settings, arguments] { RunSend(*arguments, settings); }; });
}

}  // namespace clmctl
