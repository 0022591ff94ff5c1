/// @file
/// The fixture of the tests of fan requests.
#pragma once

#include "ServiceOnBoard.h"

#include <string>

namespace ps::hwapi::common::climate {

/// A service on a board with two fans in use and a third one that its driver knows.
class FanTest : public ServiceOnBoardTest {
 protected:
  FanTest() {
    Start(EUnitVersion_Kela);
    SetUpFans();
  }

  static void SetUpFans() {
    for (const u32 fan : {0u, 1u, 2u}) fake::SetFan(fan, {.rpm = 3000 + 100 * static_cast<int>(fan), .hertz = 25000});
  }

  /// @return the info text of a response, at its offset 8, up to its first zero
  static std::string InfoOf(const fake::Message& response) {
    std::string info;
    for (std::size_t i = 8; i < 40 && i < response.payload.size() && response.payload[i] != 0; ++i) {
      info.push_back(static_cast<char>(response.payload[i]));
    }
    return info;
  }
  /// @return the whole info field of a response, with what follows its text
  static std::string InfoFieldOf(const fake::Message& response) {
    const std::string bytes(response.payload.begin(), response.payload.end());
    return bytes.substr(8, 32);
  }
  /// @return a text as an info field holds it
  static std::string InfoField(std::string text) {
    text.resize(32, '\0');
    return text;
  }
  /// @return the status of a response, at its offset 4
  static u32 StatusOf(const fake::Message& response) { return WordAt(response, 4); }

  /// Forgets what happened so far, and lets the payload be missing from a message that is created the next time.
  /// @param creation function and id: how the message was created in what happened so far
  static void LosePayload(const std::string& creation, u32 id) {
    unsigned lost = 1;
    for (const fake::Call& call : fake::Calls({"AaSysComMsgGetPayload", creation})) {
      if (call.function == creation && call.arguments.at(0) == fake::Value(id)) break;
      if (call.function == "AaSysComMsgGetPayload") ++lost;
    }
    Forget();
    fake::FailCall("AaSysComMsgGetPayload", lost);
  }

  /// @return the words of a payload from an offset in bytes on
  static std::vector<u32> WordsFrom(const fake::Message& message, std::size_t offset) {
    std::vector<u32> words;
    for (; offset < message.payload.size(); offset += 4) words.push_back(WordAt(message, offset));
    return words;
  }

  /// @return a receiver field as the wire has it
  static u32 Receiver(u8 board, u8 cpu, u16 task) { return board | u32{cpu} << 8 | u32{task} << 16; }
};

}  // namespace ps::hwapi::common::climate
