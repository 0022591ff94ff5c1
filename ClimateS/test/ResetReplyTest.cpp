/// The answers to announced resets, requests that are shorter or longer than theirs, and calls that fail.
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kNoReply = "Message handling error: Creation of API_RESET_RESP_MSG failed";

class ResetReplyTest : public ResetTest {
 protected:
  ResetReplyTest() { StartService(); }
};

TEST_F(ResetReplyTest, GoesToTheRequesterFromWhereTheRequestWent) {
  ResetRequest request;
  fake::Message message = request.Message();
  message.sender = kRequester;
  const fake::Message expected = {
      .id = kResetResp, .payload = Words({0, 1, 1, 1, 7}), .sender = kTemperatureEndpoint, .receiver = kRequester};
  EXPECT_EQ(AnswerTo(message, kResetResp), expected);
}

TEST_F(ResetReplyTest, RepeatsTheFieldsOfTheRequest) {
  const ResetRequest request{.board = 0x11223344, .cpu = 0x55667788, .state = 0x99AABBCC, .extra = 0xDDEEFF01};
  EXPECT_EQ(Announce(request).payload, Words({0, 0x11223344, 0x55667788, 0x99AABBCC, 0xDDEEFF01}));
}

TEST_F(ResetReplyTest, RepeatsTheFieldsOfAStoredRequest) {
  EXPECT_EQ(Announce({.cpu = 0xD4, .extra = 0xFFFFFF12, .category = 5}).payload, Words({0, 1, 0xD4, 1, 0xFFFFFF12}));
}

TEST_F(ResetReplyTest, IsTheOnlyMessage) {
  Announce({});
  EXPECT_EQ(fake::SentMessages().size(), 1u);
}

TEST_F(ResetReplyTest, ThatCannotBeCreatedRefusesTheRequest) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(ResetRequest().Message()), kNoReply);
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(ResetReplyTest, ThatCannotBeCreatedRefusesTheRequestForAnotherBoardToo) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(ResetRequest{.board = 2}.Message()), kNoReply);
}

TEST_F(ResetReplyTest, WithoutPayloadIsDestroyed) {
  fake::FailCall("AaSysComMsgGetPayload", 2);
  EXPECT_EQ(Refusal(ResetRequest().Message()), kNoReply);
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(ResetReplyTest, ThatFailsIsNotSaidToBeSent) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(ResetRequest().Message()), kNoReply);
  EXPECT_FALSE(fake::HasLogLine(kDebug, "Sending API_RESET_RESP_MSG to HWAPI_RESET_SERVICE"));
}

TEST_F(ResetReplyTest, ThatFailsLeavesTheResetStored) {
  fake::FailCall("AaSysComMsgCreateReply");
  Refusal(ResetRequest().Message());
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

TEST_F(ResetReplyTest, ARequestWithoutPayloadIsRefusedAndStoresNothing) {
  EXPECT_EQ(Refusal({.id = kResetReq, .sender = kResetService}),
            "Message handling error: Payload missing from API2_RESET_REQ_MSG");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaUtcTimeGet", "AaSysComMsgCreateReply", "ddal_boot_get_reset_loop_count"}),
              IsEmpty());
}

TEST_F(ResetReplyTest, AfterARequestWithoutPayloadTheHistoryIsAsItWas) {
  Announce({});
  Refusal({.id = kResetReq, .sender = kResetService});
  BlackBoxData::getInstance()->createBlackboxFile();
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

/// Requests of every length; fields beyond their end are zero.
class ResetRequestLengthTest : public ResetReplyTest {
 protected:
  /// A request without a zero byte, so that each one that is read too few or too many shows.
  static ResetRequest Whole() {
    return {.board = 0x01010101,
            .cpu = 0x02020202,
            .state = 0x03030303,
            .extra = 0x04040404,
            .category = 0x05050505,
            .extended = std::string(60, 'e'),
            .node = 0x06060606};
  }
  /// @return what is left of the request in @p length bytes
  static ResetRequest Cut(std::size_t length) {
    fake::Message message = Whole().Message();
    message.payload.resize(length);
    const std::string text(message.payload.begin(), message.payload.end());
    return {.board = WordAt(message, 0),
            .cpu = WordAt(message, 4),
            .state = WordAt(message, 8),
            .extra = WordAt(message, 12),
            .category = WordAt(message, 16),
            .extended = length > 20 ? text.substr(20, 60) : ""};
  }
  static fake::Message WithLength(const ResetRequest& request, std::size_t length) {
    fake::Message message = request.Message();
    message.payload.resize(length, 'z');
    return message;
  }
};

TEST_F(ResetRequestLengthTest, FieldsBehindAShortPayloadAreZero) {
  for (std::size_t length = 1; length < 84; ++length) {
    Forget();
    const fake::Message answer = AnswerTo(WithLength(Whole(), length), kResetResp);
    EXPECT_EQ(answer.payload, Cut(length).Answer()) << length;
    EXPECT_EQ(fake::LogLines().front(), Line(kDebug, Cut(length).Arrival())) << length;
  }
}

TEST_F(ResetRequestLengthTest, AShortRequestIsStoredOnceItHasItsState) {
  for (std::size_t length = 1; length < 84; ++length) {
    Forget();
    Refusal(WithLength({.extra = 4, .extended = std::string(60, 'e')}, length));
    const std::string type = length > 12 ? "Cold reset" : "Unknown reset reason";
    const std::string category = length > 16 ? "User" : "Unknown";
    const std::string extended =
        length > 20 ? " (" + std::string(std::min<std::size_t>(length - 20, 60), 'e') + ")" : "";
    if (length < 9) {
      EXPECT_EQ(fake::FileContent(kBoardFile), std::nullopt) << length;
    } else {
      EXPECT_EQ(Reasons().back(), type + " : " + category + extended) << length;
    }
  }
}

TEST_F(ResetRequestLengthTest, WhatStandsBehindTheRecordIsNotRead) {
  for (const std::size_t length : {85u, 88u, 148u, 65535u}) {
    Forget();
    const ResetRequest request{.extended = std::string(60, 'e'), .node = 0x65656565};
    EXPECT_EQ(AnswerTo(WithLength(request, length), kResetResp).payload, Words({0, 1, 1, 1, 7})) << length;
    EXPECT_EQ(fake::LogLines().front().text, request.Arrival()) << length;
    EXPECT_EQ(Reasons().back(), "Warm reset : User (" + std::string(60, 'e') + ")") << length;
  }
}

/// Calls that fail while a reset is stored.
class FailingResetRequestTest : public ResetReplyTest {
 protected:
  /// @return what is stored once everything works again
  static std::vector<std::string> LaterReasons() {
    fake::StopFailing();
    fake::SetReadOnly("/ffs", false);
    EXPECT_EQ(BlackBoxData::getInstance()->createBlackboxFile(), 1u);
    return Reasons();
  }
};

TEST_F(FailingResetRequestTest, AReadOnlyFlashIsNoReasonNotToAnswer) {
  fake::SetReadOnly("/ffs");
  EXPECT_EQ(Announce({}).payload, Words({0, 1, 1, 1, 7}));
  EXPECT_EQ(fake::FileContent(kBoardFile), std::nullopt);
  EXPECT_TRUE(fake::Logged(kError, "BlackBoxData::createBlackboxFile(): failed to create file " + kBoardFile));
  EXPECT_THAT(LaterReasons(), ElementsAre("Warm reset : User"));
}

TEST_F(FailingResetRequestTest, NoCallThatFailsKeepsTheAnswerBack) {
  const std::vector<std::string> functions = {"AaFileOpen",
                                              "AaFileWrite",
                                              "AaFileClose",
                                              "AaFileCopy",
                                              "ddal_boot_get_reset_loop_count",
                                              "ddal_boot_get_linux_id",
                                              "AaUtcTimeGet",
                                              "ddal_boot_get_linux_active",
                                              "ddal_ffs_is_mounted",
                                              "ApiGetModuleProductionCode"};
  for (const std::string& function : functions) {
    fake::FailEvery(function);
    EXPECT_EQ(Announce({}).payload, Words({0, 1, 1, 1, 7})) << function;
    fake::StopFailing();
  }
  EXPECT_EQ(HistoryIn(kBoardFile).find("(no history)"), std::string::npos);
}

TEST_F(FailingResetRequestTest, AFileThatCannotBeWrittenKeepsTheResetForTheNextTime) {
  for (const char* function : {"AaFileOpen", "AaFileWrite", "AaFileClose"}) {
    fake::FailEvery(function);
    Announce({.extended = function});
    fake::StopFailing();
  }
  EXPECT_THAT(LaterReasons(), ElementsAre("Warm reset : User (AaFileOpen)", "Warm reset : User (AaFileWrite)",
                                          "Warm reset : User (AaFileClose)"));
}

TEST_F(FailingResetRequestTest, AStandbyCopyThatFailsIsAnErrorAndIsAnswered) {
  fake::FailCall("AaFileCopy");
  EXPECT_EQ(Announce({}).payload, Words({0, 1, 1, 1, 7}));
  EXPECT_TRUE(fake::Logged(kError, "BlackBoxData::CopyFileToNonRunningFS() Blackbox file copying is not possible"));
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
