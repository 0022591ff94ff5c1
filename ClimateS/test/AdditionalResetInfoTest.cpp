#include "AdditionalResetInfo.h"

#include "PrivateRoot.h"
#include "fake/PlatformTest.h"

#include <gmock/gmock.h>

#include <limits>
#include <ostream>
#include <string>
#include <type_traits>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

static_assert(std::has_virtual_destructor_v<AdditionalResetInfo>);
static_assert(PARTITION_1 == 0 && PARTITION_2 == 1 && PARTITION_INVALID == 2);
static_assert(AdditionalResetInfo::FallbackRLCValueZun == 7);
static_assert(AdditionalResetInfo::CPLD_READ_ERROR == -1 && AdditionalResetInfo::CPLD_READ_NOT_SUPPORTED == -2);

constexpr const char* kLink = "/ffs/run";

fake::LogLine Info(const std::string& text) { return {EAaSysLogSeverityLevel_Info, 131143, text}; }
fake::LogLine Error(const std::string& text) { return {EAaSysLogSeverityLevel_Error, 131143, text}; }

fake::LogLine CounterLine(i32 value) { return Info("Reset loop counter value -> " + std::to_string(value)); }
fake::LogLine PartitionLine(const std::string& target, const std::string& name) {
  return Info("Running partition -> " + target + ", Reset partition -> " + name);
}
const fake::LogLine kNoCounter = Error("Failed to read CPLD RLC register");
const fake::LogLine kNoLink = Error("Failed to follow running partition symbolic link");
const fake::LogLine kOtherTarget = Error("Failed to compare symbolic link name");

std::string Text() { return AdditionalResetInfo().getAdditionalResetInfoString(); }

/// A board whose link to the running partition is what a test makes it.
class AdditionalResetInfoTest : public InPrivateRoot<fake::PlatformTest> {
 protected:
  static void Boot(const std::string& target, i32 counter) {
    MakeRealLink(kLink, target);
    fake::Board().resetLoopCount = counter;
  }
  /// @return the log lines of a sampling
  static std::vector<fake::LogLine> Lines() {
    fake::ClearLog();
    const AdditionalResetInfo info;
    return fake::LogLines();
  }
};

TEST_F(AdditionalResetInfoTest, TellsTheFirstPartition) {
  Boot("/ffs/fs1", 0);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: 0");
}

TEST_F(AdditionalResetInfoTest, TellsTheSecondPartition) {
  Boot("/ffs/fs2", 3);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs2 RLC: 3");
}

TEST_F(AdditionalResetInfoTest, ASamplingIsLogged) {
  Boot("/ffs/fs1", 0);
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(0), PartitionLine("/ffs/fs1", "/ffs/fs1")));
}

TEST_F(AdditionalResetInfoTest, ACounterOfSixIsNoFallback) {
  Boot("/ffs/fs1", 6);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: 6");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(6), PartitionLine("/ffs/fs1", "/ffs/fs1")));
}

TEST_F(AdditionalResetInfoTest, ACounterOfSevenIsAFallbackFromTheFirstPartitionToTheSecond) {
  Boot("/ffs/fs1", 7);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs2 FALLBACK RLC: 7");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(7), PartitionLine("/ffs/fs1", "/ffs/fs2")));
}

TEST_F(AdditionalResetInfoTest, ACounterOfSevenIsAFallbackFromTheSecondPartitionToTheFirst) {
  Boot("/ffs/fs2", 7);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 FALLBACK RLC: 7");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(7), PartitionLine("/ffs/fs2", "/ffs/fs1")));
}

TEST_F(AdditionalResetInfoTest, EveryGreaterCounterIsAFallbackToo) {
  constexpr i32 kLargest = std::numeric_limits<i32>::max();
  Boot("/ffs/fs1", kLargest);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs2 FALLBACK RLC: 2147483647");
  EXPECT_EQ(Lines().front(), CounterLine(kLargest));
}

TEST_F(AdditionalResetInfoTest, ACounterThatCannotBeReadIsAnError) {
  for (const int result : {1, -1, -1001}) {
    fake::FailCall("ddal_boot_get_reset_loop_count", 1, result);
    EXPECT_THAT(Text(), testing::EndsWith(" RLC: Error")) << result;
  }
}

TEST_F(AdditionalResetInfoTest, WithoutACounterThePartitionIsThatOfTheLink) {
  Boot("/ffs/fs1", 7);
  fake::FailEvery("ddal_boot_get_reset_loop_count");
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: Error");
  EXPECT_THAT(Lines(), ElementsAre(kNoCounter, PartitionLine("/ffs/fs1", "/ffs/fs1")));
}

TEST_F(AdditionalResetInfoTest, ACounterOfMinusOneReadsAsAnError) {
  Boot("/ffs/fs1", -1);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: Error");
  EXPECT_EQ(Lines().front(), CounterLine(-1));
}

TEST_F(AdditionalResetInfoTest, ACounterOfMinusTwoReadsAsNotApplicable) {
  Boot("/ffs/fs1", -2);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: Not applicable");
}

TEST_F(AdditionalResetInfoTest, AnyOtherNegativeCounterIsANumber) {
  Boot("/ffs/fs1", -3);
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 RLC: -3");
}

TEST_F(AdditionalResetInfoTest, WithoutALinkThePartitionIsInvalid) {
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: 0");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(0), kNoLink));
}

TEST_F(AdditionalResetInfoTest, WithoutALinkThereIsNoFallback) {
  fake::Board().resetLoopCount = 7;
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: 7");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(7), kNoLink));
}

TEST_F(AdditionalResetInfoTest, WithoutALinkAndACounterBothAreTold) {
  fake::FailEvery("ddal_boot_get_reset_loop_count");
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: Error");
  EXPECT_THAT(Lines(), ElementsAre(kNoCounter, kNoLink));
}

TEST_F(AdditionalResetInfoTest, ADirectoryInPlaceOfTheLinkIsNoLink) {
  MakeRealDir(kLink);
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: 0");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(0), kNoLink));
}

TEST_F(AdditionalResetInfoTest, AnInvalidPartitionHasTheNameOfTheLink) {
  Boot("/ffs/fs3", 0);
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(0), kOtherTarget, PartitionLine("/ffs/fs3", "/ffs/run")));
}

TEST_F(AdditionalResetInfoTest, AnInvalidPartitionStaysSoInAFallback) {
  Boot("/ffs/fs3", 7);
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: 7");
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(7), kOtherTarget, PartitionLine("/ffs/fs3", "/ffs/run")));
}

TEST_F(AdditionalResetInfoTest, TheCounterIsReadOnceWithTheObject) {
  const AdditionalResetInfo info;
  static_cast<void>(info.getAdditionalResetInfoString());
  static_cast<void>(info.getAdditionalResetInfoString());
  EXPECT_THAT(fake::Calls("ddal_boot_get_reset_loop_count"), ElementsAre(fake::Call("ddal_boot_get_reset_loop_count")));
}

TEST_F(AdditionalResetInfoTest, TheTextIsThatOfTheMomentTheObjectWasMade) {
  Boot("/ffs/fs1", 1);
  const AdditionalResetInfo info;
  std::remove(kLink);
  Boot("/ffs/fs2", 9);
  EXPECT_EQ(info.getAdditionalResetInfoString(), " Runnig partition: /ffs/fs1 RLC: 1");
  EXPECT_EQ(Text(), " Runnig partition: /ffs/fs1 FALLBACK RLC: 9");
}

TEST_F(AdditionalResetInfoTest, MakingTheTextLogsNothing) {
  Boot("/ffs/fs1", 1);
  const AdditionalResetInfo info;
  fake::ClearLog();
  static_cast<void>(info.getAdditionalResetInfoString());
  EXPECT_THAT(fake::LogLines(), testing::IsEmpty());
}

TEST_F(AdditionalResetInfoTest, ATextInFrontOfTheOperatorComesFirst) {
  Boot("/ffs/fs1", 1);
  AdditionalResetInfo info;
  EXPECT_EQ(std::string("Cold reset") + info, "Cold reset Runnig partition: /ffs/fs1 RLC: 1");
}

TEST_F(AdditionalResetInfoTest, ATextBehindTheOperatorComesFirstToo) {
  Boot("/ffs/fs1", 1);
  AdditionalResetInfo info;
  EXPECT_EQ(info + std::string("Cold reset"), "Cold reset Runnig partition: /ffs/fs1 RLC: 1");
}

TEST_F(AdditionalResetInfoTest, ALiteralBehindTheOperatorComesFirstToo) {
  Boot("/ffs/fs1", 1);
  AdditionalResetInfo info;
  EXPECT_EQ(info + "Cold reset", "Cold reset Runnig partition: /ffs/fs1 RLC: 1");
}

TEST_F(AdditionalResetInfoTest, BehindAnEmptyTextNothingIsLost) {
  Boot("/ffs/fs2", 1);
  AdditionalResetInfo info;
  EXPECT_EQ(std::string() + info, " Runnig partition: /ffs/fs2 RLC: 1");
  EXPECT_EQ(info + "", " Runnig partition: /ffs/fs2 RLC: 1");
}

/// A link target that names no partition, and what of it is logged.
struct OtherTarget {
  const char* name;
  std::string target;
  std::string logged;

  friend std::ostream& operator<<(std::ostream& out, const OtherTarget& row) { return out << row.name; }
};

class OtherTargetTest : public AdditionalResetInfoTest, public testing::WithParamInterface<OtherTarget> {};

TEST_P(OtherTargetTest, IsInvalid) {
  Boot(GetParam().target, 0);
  EXPECT_EQ(Text(), " Runnig partition: Invalid RLC: 0");
}

TEST_P(OtherTargetTest, IsLogged) {
  Boot(GetParam().target, 0);
  EXPECT_THAT(Lines(), ElementsAre(CounterLine(0), kOtherTarget, PartitionLine(GetParam().logged, "/ffs/run")));
}

/// @return a target of so many characters that begins like the first partition
std::string Long(std::size_t length) {
  std::string target = "/ffs/fs1/abcdefghijklmnopqrstuvwxyz0123456789";
  target.resize(length);
  return target;
}

INSTANTIATE_TEST_SUITE_P(
    Targets, OtherTargetTest,
    testing::Values(OtherTarget{"WithATrailingSlash", "/ffs/fs1/", "/ffs/fs1/"},
                    OtherTarget{"OfTheSecondWithATrailingSlash", "/ffs/fs2/", "/ffs/fs2/"},
                    OtherTarget{"ThatIsRelative", "fs1", "fs1"}, OtherTarget{"InCapitals", "/FFS/FS1", "/FFS/FS1"},
                    OtherTarget{"ThatIsShorter", "/ffs/fs", "/ffs/fs"},
                    OtherTarget{"ThatIsTheLinkItself", "/ffs/run", "/ffs/run"},
                    OtherTarget{"Of29Characters", Long(29), Long(29)},
                    OtherTarget{"Of30Characters", Long(30), Long(30)},
                    OtherTarget{"Of31Characters", Long(31), Long(30)},
                    OtherTarget{"OfManyCharacters", "/" + std::string(1000, 'x'), "/" + std::string(29, 'x')}),
    testing::PrintToStringParamName());

}  // namespace
}  // namespace ps::hwapi::common::climate
