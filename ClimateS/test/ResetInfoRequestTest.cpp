/// The question why the board was last reset.
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kBootState = " Runnig partition: /ffs/fs1 RLC: 0\n";
const std::string kHandler = "HandleApiBlackboxResetInfoReqMsg(): ";

class ResetInfoRequestTest : public ResetTest {
 protected:
  static fake::Message Question() {
    return {.id = kResetInfoReq,
            .payload = Words({0x11223344, 0x55667788, 0x99AABBCC}),
            .sender = kRequester,
            .receiver = kTemperatureEndpoint};
  }
  static fake::Message Ask() { return AnswerTo(Question(), kResetInfoResp); }

  static u32 CategoryIn(const fake::Message& answer) { return WordAt(answer, 12); }
  /// @return the 60 bytes of the extended information
  static fake::Bytes ExtendedIn(const fake::Message& answer) {
    EXPECT_EQ(answer.payload.size(), 80u);
    return answer.payload.size() == 80 ? fake::Bytes(answer.payload.begin() + 16, answer.payload.begin() + 76)
                                       : fake::Bytes{};
  }
  /// @return a text in its field of 60 bytes
  static fake::Bytes Field(const std::string& text) {
    fake::Bytes field(text.begin(), text.end());
    field.resize(60);
    return field;
  }
  /// @return an entry of the history
  static std::string Entry(const std::string& reason) { return kNoon + reason + kBootState; }
  /// @return the texts of all lines that name no category
  static std::vector<std::string> UnknownCategories() {
    std::vector<std::string> texts = fake::LogTexts(kInfo);
    std::erase_if(texts, [](const std::string& text) { return text.find("unknown reset category") == text.npos; });
    return texts;
  }
};

TEST_F(ResetInfoRequestTest, IsAnsweredByteForByte) {
  StartWith(Entry("Warm reset : SwActivation (new build)"));
  fake::Bytes payload = Words({0x11223344, 0x55667788, 0x99AABBCC, 3});
  const fake::Bytes extended = Field("new build");
  payload.insert(payload.end(), extended.begin(), extended.end());
  payload.resize(80);
  const fake::Message expected = {
      .id = kResetInfoResp, .payload = payload, .sender = kTemperatureEndpoint, .receiver = kRequester};
  EXPECT_EQ(Ask(), expected);
}

TEST_F(ResetInfoRequestTest, TheAnswerIsCreatedAsAReplyAndSent) {
  StartWith(Entry("Warm reset : User (why)"));
  Ask();
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileOpen", kBoardFile, "r"},
                                   {"AaFileClose", kBoardFile},
                                   {"AaSysComMsgCreateReply", kResetInfoResp, 80, kResetInfoReq},
                                   {"AaSysComMsgSend", kResetInfoResp, kRequester}}));
  EXPECT_EQ(fake::SentMessages().size(), 1u);
}

TEST_F(ResetInfoRequestTest, ChangesNothing) {
  StartWith(Entry("Warm reset : User (why)"));
  const auto before = fake::FileContent(kBoardFile);
  Ask();
  EXPECT_THAT(fake::Calls({"AaFileWrite", "AaFileCopy", "AaFileRemove", "AaUtcTimeGet"}), IsEmpty());
  EXPECT_EQ(fake::OpenFiles(), 0u);
  EXPECT_EQ(fake::FileContent(kBoardFile), before);
}

TEST_F(ResetInfoRequestTest, IsLoggedInOrder) {
  StartWith(Entry("Warm reset : User (by hand)"));
  Ask();
  const std::string parser =
      "BlackBoxData::ResetStateInfo(): After sscanf: ResetReason 'User', ResetExtInfo '(by hand'";
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, "HandleApiBlackboxResetInfoReqMsg received"),
                          Line(kInfo, "HandleApiBlackboxResetInfoReqMsg called"), Line(kDebug, parser),
                          Line(kDebug, "BlackBoxData::ResetStateInfo():ResetCategory 'User', ResetExt 'by hand'"),
                          Line(kDebug, kHandler + "reset category: 1 and reset extra 'by hand'")));
}

TEST_F(ResetInfoRequestTest, ACategoryThatIsUnknownIsLoggedBeforeTheResult) {
  StartWith(Entry("Watchdog reset"));
  Ask();
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, "HandleApiBlackboxResetInfoReqMsg received"),
                          Line(kInfo, "HandleApiBlackboxResetInfoReqMsg called"),
                          Line(kDebug, "BlackBoxData::ResetStateInfo():ResetCategory 'Unknown', ResetExt ''"),
                          Line(kInfo, kHandler + "unknown reset category 'Unknown'"),
                          Line(kDebug, kHandler + "reset category: 0 and reset extra ''")));
}

/// Without a board file.
class ResetInfoWithoutFileTest : public ResetInfoRequestTest {
 protected:
  ResetInfoWithoutFileTest() {
    StartWith(Entry("Warm reset : User (why)"));
    fake::RemoveAll(kBoardFile);
  }
};

TEST_F(ResetInfoWithoutFileTest, IsAnsweredWithoutACategory) {
  fake::Bytes payload = Words({0x11223344, 0x55667788, 0x99AABBCC});
  payload.resize(80);
  EXPECT_EQ(Ask().payload, payload);
}

TEST_F(ResetInfoWithoutFileTest, TheHistoryIsNotAskedAndNoUnknownCategoryIsLogged) {
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "HandleApiBlackboxResetInfoReqMsg received"),
                                            Line(kInfo, "HandleApiBlackboxResetInfoReqMsg called"),
                                            Line(kDebug, kHandler + "reset category: 0 and reset extra ''")));
}

TEST_F(ResetInfoWithoutFileTest, ItCountsAgainOnceItIsWritten) {
  BlackBoxData::getInstance()->createBlackboxFile();
  EXPECT_EQ(CategoryIn(Ask()), 1u);
}

TEST_F(ResetInfoRequestTest, AFileThatCannotBeOpenedCountsAsNone) {
  StartWith(Entry("Warm reset : User (why)"));
  fake::FailEvery("AaFileOpen");
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), 0u);
  EXPECT_EQ(ExtendedIn(answer), Field(""));
  EXPECT_THAT(UnknownCategories(), IsEmpty());
}

TEST_F(ResetInfoRequestTest, AnEmptyHistoryHasNoCategory) {
  StartWith("");
  EXPECT_EQ(CategoryIn(Ask()), 0u);
  EXPECT_THAT(UnknownCategories(), ElementsAre(kHandler + "unknown reset category 'Unknown'"));
}

TEST_F(ResetInfoRequestTest, TheNewestEntryCounts) {
  StartWith(Entry("Warm reset : User (old)") + Entry("Warm reset : Network (new)"));
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), 2u);
  EXPECT_EQ(ExtendedIn(answer), Field("new"));
}

TEST_F(ResetInfoRequestTest, AnnouncedResetsAreTold) {
  StartService();
  Announce({.extra = 3, .category = 4, .extended = "link lost"});
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), 4u);
  EXPECT_EQ(ExtendedIn(answer), Field("link lost"));
}

TEST_F(ResetInfoRequestTest, AResetOfAnotherBoardIsNotTold) {
  StartWith(Entry("Warm reset : User (ours)"));
  Announce({.board = 2, .category = 2});
  EXPECT_EQ(CategoryIn(Ask()), 1u);
}

/// A category's text in the history and what is answered.
struct Category {
  const char* name;
  const char* text;
  u32 number;

  friend std::ostream& operator<<(std::ostream& out, const Category& category) { return out << category.name; }
};

class KnownCategoryOfResetInfoTest : public ResetInfoRequestTest, public testing::WithParamInterface<Category> {};

TEST_P(KnownCategoryOfResetInfoTest, IsAnsweredWithItsNumber) {
  StartWith(Entry(std::string("Warm reset : ") + GetParam().text + " (why)"));
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), GetParam().number);
  EXPECT_EQ(ExtendedIn(answer), Field("why"));
  EXPECT_THAT(UnknownCategories(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, KnownCategoryOfResetInfoTest,
                         testing::Values(Category{"User", "User", 1}, Category{"Network", "Network", 2},
                                         Category{"SwActivation", "SwActivation", 3},
                                         Category{"Recovery", "Recovery", 4},
                                         Category{"Reconfiguration", "Reconfiguration", 6},
                                         Category{"Selfdiagnostic", "Selfdiagnostic", 7},
                                         Category{"Selfdiagnosticready", "Selfdiagnosticready", 8}),
                         testing::PrintToStringParamName());

class UnknownCategoryOfResetInfoTest : public ResetInfoRequestTest, public testing::WithParamInterface<Category> {};

TEST_P(UnknownCategoryOfResetInfoTest, IsLoggedAndAnsweredWithZero) {
  StartWith(Entry(std::string("Warm reset : ") + GetParam().text));
  EXPECT_EQ(CategoryIn(Ask()), 0u);
  const std::string text = GetParam().text;
  EXPECT_THAT(UnknownCategories(),
              ElementsAre(kHandler + "unknown reset category '" + text.substr(0, text.find(' ')) + "'"));
}

INSTANTIATE_TEST_SUITE_P(Of, UnknownCategoryOfResetInfoTest,
                         testing::Values(Category{"CommissioningChange", "Commissioning change", 5},
                                         Category{"Unknown", "Unknown", 0},
                                         Category{"UnknownValue", "Unknown value", 0}, Category{"LowerCase", "user", 0},
                                         Category{"UpperCase", "USER", 0}, Category{"APart", "Use", 0},
                                         Category{"More", "Users", 0}, Category{"APartOfTwo", "Selfdiagnosticr", 0},
                                         Category{"WithAParenthesis", "User(why)", 0}),
                         testing::PrintToStringParamName());

TEST_F(ResetInfoRequestTest, ACommissioningChangeIsStoredButNotToldLater) {
  StartService();
  Announce({.category = 5, .extended = "plan"});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : Commissioning change (plan)"));
  fake::ClearLog();
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), 0u);
  EXPECT_EQ(ExtendedIn(answer), Field("plan"));
  EXPECT_THAT(UnknownCategories(), ElementsAre(kHandler + "unknown reset category 'Commissioning'"));
}

TEST_F(ResetInfoRequestTest, AnUnknownResetTypeHidesTheExtendedInformation) {
  StartService();
  Announce({.extra = 18, .category = 1, .extended = "why"});
  const fake::Message answer = Ask();
  EXPECT_EQ(CategoryIn(answer), 1u);
  EXPECT_EQ(ExtendedIn(answer), Field(""));
}

TEST_F(ResetInfoRequestTest, WithoutExtendedInformationTheFirstWordOfTheBootStateIsTold) {
  StartService();
  Announce({});
  EXPECT_EQ(ExtendedIn(Ask()), Field("Runnig"));
}

TEST_F(ResetInfoRequestTest, ExtendedInformationIsFilledUpWithZeros) {
  StartService();
  for (std::size_t length = 1; length <= 58; ++length) {
    Announce({.extended = std::string(length, 'x')});
    EXPECT_EQ(ExtendedIn(Ask()), Field(std::string(length, 'x'))) << length;
    Forget();
  }
}

TEST_F(ResetInfoRequestTest, OfLongExtendedInformation58CharactersAreTold) {
  StartService();
  for (const std::size_t length : {59u, 60u}) {
    Announce({.extended = std::string(58, 'x') + std::string(length - 58, 'y')});
    EXPECT_EQ(ExtendedIn(Ask()), Field(std::string(58, 'x'))) << length;
    Forget();
  }
}

TEST_F(ResetInfoRequestTest, OfALongWord59CharactersAreTold) {
  StartWith(kNoon + "Warm reset : User " + std::string(58, 'x') + "yz\n");
  const fake::Message answer = Ask();
  EXPECT_EQ(ExtendedIn(answer), Field(std::string(58, 'x') + "y"));
  EXPECT_EQ(CategoryIn(answer), 1u);
  EXPECT_EQ(WordAt(answer, 76), 0u);
}

TEST_F(ResetInfoRequestTest, AReplyThatCannotBeCreatedIsAnErrorOfTheResetTask) {
  StartWith(Entry("Warm reset : User (why)"));
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(Question()), "");
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  const fake::LogLine expected = {kError, 0x20031,
                                  "Failed to allocate memory for API_GET_BLACKBOX_RESET_INFO_RESP_MSG"};
  EXPECT_EQ(fake::LogLines().back(), expected);
  EXPECT_EQ(fake::LogTexts(kError).size(), 1u);
}

TEST_F(ResetInfoRequestTest, AReplyWithoutPayloadIsDestroyed) {
  StartWith(Entry("Warm reset : User (why)"));
  fake::FailCall("AaSysComMsgGetPayload", 2);
  EXPECT_EQ(Refusal(Question()), "");
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_EQ(fake::LiveMessages(), 0u);
  EXPECT_EQ(fake::LogTexts(kError).size(), 1u);
}

TEST_F(ResetInfoRequestTest, WithoutPayloadIsRefused) {
  StartWith(Entry("Warm reset : User (why)"));
  EXPECT_EQ(Refusal({.id = kResetInfoReq, .sender = kRequester}),
            "Message handling error: Payload missing from API_GET_BLACKBOX_RESET_INFO_REQ_MSG");
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaSysComMsgCreateReply"}), IsEmpty());
}

TEST_F(ResetInfoRequestTest, FieldsBehindAShortPayloadAreZero) {
  StartWith(Entry("Warm reset : User (why)"));
  for (std::size_t length = 1; length < 12; ++length) {
    Forget();
    fake::Message question = Question();
    question.payload.resize(length);
    const fake::Message answer = AnswerTo(question, kResetInfoResp);
    for (const std::size_t field : {0u, 4u, 8u}) EXPECT_EQ(WordAt(answer, field), WordAt(question, field)) << length;
    EXPECT_EQ(CategoryIn(answer), 1u) << length;
  }
}

TEST_F(ResetInfoRequestTest, WhatStandsBehindTheRecordIsNotRead) {
  StartWith(Entry("Warm reset : User (why)"));
  fake::Message question = Question();
  question.payload.resize(65535, 'z');
  const fake::Message answer = AnswerTo(question, kResetInfoResp);
  EXPECT_EQ(fake::Bytes(answer.payload.begin(), answer.payload.begin() + 12),
            Words({0x11223344, 0x55667788, 0x99AABBCC}));
  EXPECT_EQ(answer.payload.size(), 80u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
