/// What the history says of an announced reset: its type, its category and its extended information.
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ResetReasonTextTest : public ResetTest {
 protected:
  ResetReasonTextTest() { StartService(); }

  /// @return the reason that is stored for a request
  static std::string ReasonOf(const ResetRequest& request) {
    Announce(request);
    const std::vector<std::string> reasons = Reasons();
    return reasons.empty() ? "(none)" : reasons.back();
  }
};

/// A number of a request and its text.
struct Text {
  u32 number;
  const char* text;

  friend std::ostream& operator<<(std::ostream& out, const Text& row) { return out << row.number; }
};

constexpr Text kTypes[] = {{1, "Core reset"},
                           {2, "Chip reset"},
                           {3, "System reset"},
                           {4, "Cold reset"},
                           {5, "Configuration reset"},
                           {6, "System module reset"},
                           {7, "Warm reset"},
                           {8, "Remote cold reset"},
                           {9, "Remote warm reset"},
                           {10, "Software reset requested"},
                           {11, "Software failure reset requested"},
                           {12, "Hardware reset requested"},
                           {13, "Hardware failure reset requested"},
                           {14, "System module diagnostic reset"},
                           {15, "System module site reset"},
                           {16, "System module BTS reset"},
                           {17, "Rat reset"},
                           {19, "System module site reset rapid"},
                           {21, "System module self diagnostic reset"}};

class KnownResetTypeTest : public ResetReasonTextTest, public testing::WithParamInterface<Text> {};

TEST_P(KnownResetTypeTest, HasItsText) {
  EXPECT_EQ(ReasonOf({.extra = GetParam().number}), std::string(GetParam().text) + " : User");
  EXPECT_THAT(LinesOfTheHandler(), IsEmpty());
}

TEST_P(KnownResetTypeTest, HasItsTextForTheFpgaToo) {
  const std::string text = GetParam().number == 4 ? "FPGA reconfiguration / Cold reset" : GetParam().text;
  EXPECT_EQ(ReasonOf({.cpu = 0xD4, .extra = GetParam().number}), text + " : User");
  EXPECT_THAT(LinesOfTheHandler(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Type, KnownResetTypeTest, testing::ValuesIn(kTypes), testing::PrintToStringParamName());

class UnknownResetTypeTest : public ResetReasonTextTest, public testing::WithParamInterface<Text> {};

TEST_P(UnknownResetTypeTest, IsAnErrorAndStoredAsUnknown) {
  EXPECT_EQ(ReasonOf({.extra = GetParam().number, .category = 2}), "Unknown reset reason : Network");
  EXPECT_THAT(
      LinesOfTheHandler(),
      ElementsAre(Line(kError, std::string("HandleApi2ResetReqMsg(): unknown reset reason ") + GetParam().text)));
}

TEST_P(UnknownResetTypeTest, IsUnknownForTheFpgaToo) {
  EXPECT_EQ(ReasonOf({.cpu = 0xD4, .extra = GetParam().number}), "Unknown reset reason : User");
}

INSTANTIATE_TEST_SUITE_P(Type, UnknownResetTypeTest,
                         testing::Values(Text{0, "0"}, Text{18, "18"}, Text{20, "20"}, Text{22, "22"}, Text{23, "23"},
                                         Text{0x104, "260"}, Text{0x7FFFFFFF, "2147483647"},
                                         Text{0x80000004, "-2147483644"}, Text{0xFFFFFFFF, "-1"}),
                         testing::PrintToStringParamName());

/// All but the one of the self-diagnosis, which runs a command.
constexpr Text kCategories[] = {{0, "Unknown"},         {1, "User"},
                                {2, "Network"},         {3, "SwActivation"},
                                {4, "Recovery"},        {5, "Commissioning change"},
                                {6, "Reconfiguration"}, {8, "Selfdiagnosticready"}};

class KnownResetCategoryTest : public ResetReasonTextTest, public testing::WithParamInterface<Text> {};

TEST_P(KnownResetCategoryTest, HasItsText) {
  EXPECT_EQ(ReasonOf({.category = GetParam().number}), std::string("Warm reset : ") + GetParam().text);
  EXPECT_THAT(LinesOfTheHandler(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Category, KnownResetCategoryTest, testing::ValuesIn(kCategories),
                         testing::PrintToStringParamName());

class UnknownResetCategoryTest : public ResetReasonTextTest, public testing::WithParamInterface<Text> {};

TEST_P(UnknownResetCategoryTest, IsAnErrorAndStoredAsUnknown) {
  EXPECT_EQ(ReasonOf({.category = GetParam().number}), "Warm reset : Unknown value");
  EXPECT_THAT(LinesOfTheHandler(), ElementsAre(Line(kError, std::string("HandleApi2ResetReqMsg(): reset category ") +
                                                                GetParam().text + " out of range")));
}

INSTANTIATE_TEST_SUITE_P(Category, UnknownResetCategoryTest,
                         testing::Values(Text{9, "9"}, Text{10, "10"}, Text{0x107, "263"},
                                         Text{0x7FFFFFFF, "2147483647"}, Text{0x80000001, "-2147483647"},
                                         Text{0xFFFFFFFF, "-1"}),
                         testing::PrintToStringParamName());

TEST_F(ResetReasonTextTest, ATypeIsLookedAtBeforeItsCategory) {
  EXPECT_EQ(ReasonOf({.extra = 18, .category = 9}), "Unknown reset reason : Unknown value");
  EXPECT_THAT(LinesOfTheHandler(), ElementsAre(Line(kError, "HandleApi2ResetReqMsg(): unknown reset reason 18"),
                                               Line(kError, "HandleApi2ResetReqMsg(): reset category 9 out of range")));
}

TEST_F(ResetReasonTextTest, AnFpgaReconfigurationWithoutExtendedInformationHasNoParentheses) {
  EXPECT_EQ(ReasonOf({.cpu = 0xD4, .extra = 4}), "FPGA reconfiguration / Cold reset : User");
}

TEST_F(ResetReasonTextTest, ExtendedInformationStandsInParentheses) {
  EXPECT_EQ(ReasonOf({.extended = "by hand"}), "Warm reset : User (by hand)");
}

TEST_F(ResetReasonTextTest, ExtendedInformationMayBeOneCharacter) {
  EXPECT_EQ(ReasonOf({.extended = "x"}), "Warm reset : User (x)");
  EXPECT_EQ(ReasonOf({.extended = " "}), "Warm reset : User ( )");
}

TEST_F(ResetReasonTextTest, ExtendedInformationMayFillItsField) {
  EXPECT_EQ(ReasonOf({.extended = std::string(58, 'x') + "y"}), "Warm reset : User (" + std::string(58, 'x') + "y)");
}

TEST_F(ResetReasonTextTest, ExtendedInformationMayLackItsTerminatingZero) {
  const ResetRequest request{.extended = std::string(59, 'x') + "y", .node = 0x41414141};
  EXPECT_EQ(ReasonOf(request), "Warm reset : User (" + std::string(59, 'x') + "y)");
  EXPECT_TRUE(fake::Logged(kDebug, request.Arrival()));
}

TEST_F(ResetReasonTextTest, ExtendedInformationEndsAtItsFirstZero) {
  const std::string text("one\0two", 7);
  EXPECT_EQ(ReasonOf({.extended = text}), "Warm reset : User (one)");
  EXPECT_TRUE(fake::Logged(kDebug, ResetRequest{.extended = "one"}.Arrival()));
}

TEST_F(ResetReasonTextTest, ExtendedInformationThatBeginsWithAZeroIsEmpty) {
  EXPECT_EQ(ReasonOf({.extended = std::string("\0two", 4)}), "Warm reset : User");
}

TEST_F(ResetReasonTextTest, AnUnknownCategoryKeepsItsExtendedInformation) {
  EXPECT_EQ(ReasonOf({.extra = 0, .category = 9, .extended = "why"}), "Unknown reset reason : Unknown value (why)");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
