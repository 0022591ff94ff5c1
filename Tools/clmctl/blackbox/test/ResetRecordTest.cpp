#include "ResetRecord.h"

#include "ResetNames.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

const std::string kTime = "2024-03-06T10:00:00.000Z ";
const std::string kBoot = " Runnig partition: /ffs/fs1 RLC: 0";

TEST(ResetRecord, HasTimeReasonCategoryInformationAndBootState) {
  const ResetRecord record = ParseResetRecord(kTime + "Cold reset : User (night upgrade)" + kBoot);
  EXPECT_FALSE(record.damaged);
  EXPECT_EQ(record.time, "2024-03-06T10:00:00.000Z");
  EXPECT_EQ(record.reason, "Cold reset");
  EXPECT_EQ(record.category, "User");
  EXPECT_EQ(record.extendedInfo, "night upgrade");
  EXPECT_EQ(record.partition, "/ffs/fs1");
  EXPECT_FALSE(record.fallback);
  EXPECT_EQ(record.CounterValue(), 0);
}

TEST(ResetRecord, OfAStartHasNoCategory) {
  const ResetRecord record = ParseResetRecord(kTime + "Spurious reset (probably SW crash)" + kBoot);
  EXPECT_EQ(record.reason, "Spurious reset (probably SW crash)");
  EXPECT_EQ(record.category, "");
  EXPECT_EQ(record.extendedInfo, "");
}

TEST(ResetRecord, OfAStartWithoutAReasonIsNoDamage) {
  const ResetRecord record = ParseResetRecord(kTime + "" + kBoot);
  EXPECT_FALSE(record.damaged);
  EXPECT_EQ(record.reason, "");
  EXPECT_EQ(record.partition, "/ffs/fs1");
}

TEST(ResetRecord, TellsTheFallback) {
  const ResetRecord record = ParseResetRecord(kTime + "Watchdog reset Runnig partition: /ffs/fs2 FALLBACK RLC: 7");
  EXPECT_TRUE(record.fallback);
  EXPECT_EQ(record.partition, "/ffs/fs2");
  EXPECT_EQ(record.CounterValue(), 7);
}

TEST(ResetRecord, WithoutACounterSaysWhy) {
  for (const char* const text : {"Error", "Not applicable"}) {
    const ResetRecord record = ParseResetRecord(kTime + "Watchdog reset Runnig partition: Invalid RLC: " + text);
    EXPECT_FALSE(record.damaged);
    EXPECT_EQ(record.counter, text);
    EXPECT_EQ(record.CounterValue(), std::nullopt);
    EXPECT_EQ(record.partition, "Invalid");
  }
}

TEST(ResetRecord, KnowsEveryCategoryTheHistoryHas) {
  for (const ResetName& row : ResetCategories()) {
    const std::string text(row.historyText);
    EXPECT_EQ(ParseResetRecord(kTime + "Cold reset : " + text + kBoot).category, text);
    EXPECT_EQ(ParseResetRecord(kTime + "Cold reset : " + text + " (x)" + kBoot).category, text);
  }
}

TEST(ResetRecord, TakesTheFirstWordForAnUnknownCategory) {
  const ResetRecord record = ParseResetRecord(kTime + "Cold reset : Userland (x)" + kBoot);
  EXPECT_EQ(record.category, "Userland");
  EXPECT_EQ(ParseResetRecord(kTime + "Cold reset : Unknown value" + kBoot).category, "Unknown value");
}

TEST(ResetRecord, KeepsInformationThatLooksLikeSomethingElse) {
  const ResetRecord record =
      ParseResetRecord(kTime + "Cold reset : User (a : b Runnig partition: /ffs/fs2 RLC: 9)" + kBoot);
  EXPECT_EQ(record.extendedInfo, "a : b Runnig partition: /ffs/fs2 RLC: 9");
  EXPECT_EQ(record.partition, "/ffs/fs1");
  EXPECT_EQ(record.CounterValue(), 0);
}

TEST(ResetRecord, ShowsTheWordThatAPowerOnResetTookOver) {
  const ResetRecord record =
      ParseResetRecord(kTime + "PowerOn reset (probably same as previous cold reset) : User Runnig" + kBoot);
  EXPECT_EQ(record.reason, "PowerOn reset (probably same as previous cold reset)");
  EXPECT_EQ(record.extendedInfo, "Runnig");
  EXPECT_EQ(ParseResetRecord(kTime + "PowerOn reset : User (two" + kBoot).extendedInfo, "(two");
}

TEST(ResetRecord, OfAnotherShapeIsDamagedAndKeepsItsText) {
  for (const std::string& text : {std::string(), std::string("rubbish"), kTime + "Cold reset : User",
                                  "Cold reset : User" + kBoot, kTime + "Cold reset Runnig partition: /ffs/fs1",
                                  kTime.substr(0, 24) + kBoot, kTime.substr(0, 24) + "x" + kBoot}) {
    const ResetRecord record = ParseResetRecord(text);
    EXPECT_TRUE(record.damaged) << text;
    EXPECT_EQ(record.text, text);
    EXPECT_EQ(record.time, "");
  }
}

}  // namespace
}  // namespace clmctl
