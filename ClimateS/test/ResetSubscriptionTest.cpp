/// The reset service's answer to the subscription of reset events.
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <string>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr u32 kSubscribed = 0x2C62;
const std::string kRegistered = "Reset event notifications are registered";

class ResetSubscriptionTest : public ResetTest {
 protected:
  ResetSubscriptionTest() { StartService(); }

  static std::string Answer(const fake::Bytes& payload) {
    return Refusal({.id = kSubscribed, .payload = payload, .sender = kResetService, .receiver = kTemperatureEndpoint});
  }
  static fake::LogLine Failed(const std::string& status) {
    return Line(kError,
                "Reset event registering failed (status=" + status + "), blackbox data storing before reset not done");
  }
};

TEST_F(ResetSubscriptionTest, ThatSucceededIsLogged) {
  EXPECT_EQ(Answer(Words({0x4B6, 0})), "");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kInfo, kRegistered)));
}

TEST_F(ResetSubscriptionTest, ThatFailedIsAnErrorWithItsStatus) {
  for (const auto& [status, text] : {std::pair(1u, "1"),
                                     {2u, "2"},
                                     {0x100u, "256"},
                                     {0x7FFFFFFFu, "2147483647"},
                                     {0x80000000u, "-2147483648"},
                                     {0xFFFFFFFFu, "-1"}}) {
    fake::ClearLog();
    EXPECT_EQ(Answer(Words({0, status})), "");
    EXPECT_THAT(fake::LogLines(), ElementsAre(Failed(text)));
  }
}

TEST_F(ResetSubscriptionTest, TheTransactionDoesNotMatter) {
  for (const u32 transaction : {0u, 1u, 0xFFFFFFFFu}) {
    fake::ClearLog();
    Answer(Words({transaction, 0}));
    EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kInfo, kRegistered)));
  }
}

TEST_F(ResetSubscriptionTest, WithoutPayloadIsRefused) {
  EXPECT_EQ(Answer({}), "Message handling error: Payload missing from API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

TEST_F(ResetSubscriptionTest, AStatusBehindAShortPayloadIsZero) {
  for (std::size_t length = 1; length <= 4; ++length) {
    fake::ClearLog();
    EXPECT_EQ(Answer(fake::Bytes(length, 0xFF)), "");
    EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kInfo, kRegistered))) << length;
  }
}

TEST_F(ResetSubscriptionTest, OfAStatusThatIsCutTheMissingBytesAreZero) {
  const std::string statuses[] = {"1", "513", "197121"};
  for (std::size_t length = 5; length <= 7; ++length) {
    fake::ClearLog();
    fake::Bytes payload = Words({0, 0x04030201});
    payload.resize(length);
    Answer(payload);
    EXPECT_THAT(fake::LogLines(), ElementsAre(Failed(statuses[length - 5])));
  }
}

TEST_F(ResetSubscriptionTest, WhatStandsBehindTheRecordIsNotRead) {
  Answer(Words({0, 0, 1, 1}));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kInfo, kRegistered)));
}

TEST_F(ResetSubscriptionTest, IsNotAnsweredAndWritesNothing) {
  Answer(Words({0, 0}));
  Answer(Words({0, 1}));
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(fake::Calls("AaFileOpen"), IsEmpty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
