/// @file
/// The fixture of tests that speak with a started service by messages.
#pragma once

#include "ClimateService.h"
#include "fake/PlatformTest.h"

#include <optional>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// Addresses; the own node is 0x0101.
inline constexpr TAaSysComSicad kTemperatureEndpoint = 0x010104B6;
inline constexpr TAaSysComSicad kFanEndpoint = 0x010104AD;
inline constexpr TAaSysComSicad kRequester = 0x02030ABC;
inline constexpr TAaSysComSicad kOtherClient = 0x04050DEF;

/// @return a payload of 32-bit words
inline fake::Bytes Words(const std::vector<u32>& words) {
  fake::Bytes payload;
  for (const u32 word : words) {
    for (u32 shift = 0; shift < 32; shift += 8) payload.push_back(static_cast<u8>(word >> shift));
  }
  return payload;
}

/// @return the 32-bit word at an offset in bytes; 0 beyond the payload's end
inline u32 WordAt(const fake::Message& message, std::size_t offset) {
  u32 word = 0;
  for (std::size_t i = 0; i < sizeof(word) && offset + i < message.payload.size(); ++i) {
    word |= u32{message.payload[offset + i]} << (8 * i);
  }
  return word;
}

/// A service that is started on a board and receives what is sent to its endpoints.
class ServiceOnBoardTest : public fake::PlatformTest {
 protected:
  /// Starts the service and forgets what that did.
  void Start(EUnitVersion version) {
    fake::Unit().version = version;
    m_service.emplace();
    fake::ServeTask(0x4B6);
    m_service->Init();
    Forget();
  }

  /// Forgets the calls, log lines and sent messages so far.
  static void Forget() {
    fake::Clear();
    fake::ClearLog();
    fake::ClearSentMessages();
  }

  /// Hands a message to its handler.
  /// @return "reason: description" of the MsgHandlingException that left the handler; "" when none did
  static std::string Refusal(const fake::Message& message) {
    try {
      EXPECT_TRUE(fake::Dispatch(message)) << "no handler for " << message;
    } catch (const MsgHandlingException& refusal) {
      return std::string(refusal.what()) + ": " + refusal.getDescription();
    }
    return "";
  }

  /// Hands a request to its handler.
  /// @return the only message with that id that was sent since the last Forget; an empty one when that is not so
  static fake::Message AnswerTo(const fake::Message& request, u32 answerId) {
    EXPECT_EQ(Refusal(request), "");
    const std::vector<fake::Message> answers = fake::SentMessages(answerId);
    EXPECT_EQ(answers.size(), 1u) << "answers to " << request;
    return answers.size() == 1 ? answers.front() : fake::Message{};
  }

  /// Lets time pass, then handles what has arrived.
  static void Pass(std::uint64_t microseconds) {
    fake::AdvanceTime(microseconds);
    fake::DispatchQueued();
  }

  std::optional<ClimateService> m_service;
};

}  // namespace ps::hwapi::common::climate
