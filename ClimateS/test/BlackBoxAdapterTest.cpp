/// The service's way to the black box: which boards have one, its fans, and the tag of the boot-image link.
#include "BlackBoxTest.h"
#include "ClimateServiceBlackBoxData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kLinkTag = "sys.hwapi.bootimage.link.created";
constexpr u32 kNotification = 0x08E6;
constexpr TAaSysComSicad kService = 0x010104B6;
constexpr u32 kVersions[] = {0, 15, 16, 17, 18, 24, 25, 26, 27, 28, 30, 31, 33, 38, 39, 41, 43, 51, 58};

/// An adapter and the process's black box.
class BlackBoxAdapterTest : public BlackBoxTest {
 protected:
  BlackBoxAdapterTest() : BlackBoxTest(BlackBoxData::getInstance()) {}

  u32 InitWithFans(u32 numberOfFans) { return m_adapter.InitBlackBoxData(m_fans, numberOfFans); }

  /// @return the line with the names of all columns of the trace file
  std::string Columns() {
    m_blackBox.writeTempAndSpeedDataToFile();
    const std::string file = File(kTraceFile);
    const std::size_t begin = file.find("#     ");
    return file.substr(begin, file.find('\n', begin) - begin);
  }

  /// @return whether a board of that type and version has a black box
  static bool HasBlackBox(u32 type, u32 version) {
    fake::RemoveTag("app.hwapi.blackbox.config.file");
    fake::ClearLog();
    ClimateServiceBlackBoxData adapter(EUnitVersion{version}, EUnitType{type});
    EXPECT_EQ(adapter.InitBlackBoxData(nullptr, 0), 0u);
    return fake::HasLogLine(kError,
                            "BlackBox should be used in this HW, but there was some problem when initializing it");
  }

  const std::string m_fans[3] = {"GAR_FAN2", "GAR_FAN1", "GAR_FAN3"};
  ClimateServiceBlackBoxData m_adapter{EUnitVersion_Kela, EUnitType_Kel};
};

TEST_F(BlackBoxAdapterTest, KelBoardsHaveABlackBoxExceptKele) {
  for (const u32 version : kVersions) EXPECT_EQ(HasBlackBox(9, version), version != 31) << version;
}

TEST_F(BlackBoxAdapterTest, PivoBoardsHaveABlackBox) {
  for (const u32 version : kVersions) EXPECT_TRUE(HasBlackBox(10, version)) << version;
}

TEST_F(BlackBoxAdapterTest, ZunBoardsHaveABlackBox) {
  for (const u32 version : kVersions) EXPECT_TRUE(HasBlackBox(19, version)) << version;
}

TEST_F(BlackBoxAdapterTest, OtherBoardsHaveNone) {
  for (const u32 type : {0u, 8u, 11u, 12u, 18u, 20u, 22u, 0xFFFFFFFFu}) {
    for (const u32 version : kVersions) EXPECT_FALSE(HasBlackBox(type, version)) << type << "/" << version;
  }
}

TEST_F(BlackBoxAdapterTest, OnABoardWithoutOneNothingHappens) {
  fake::Clear();
  ClimateServiceBlackBoxData adapter(EUnitVersion_Vyda, EUnitType_Vyd);
  EXPECT_EQ(adapter.InitBlackBoxData(m_fans, 3), 0u);
  EXPECT_THAT(fake::Calls(), IsEmpty());
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
}

TEST_F(BlackBoxAdapterTest, MakingAnAdapterAsksThePlatformForNothing) {
  fake::Clear();
  { const ClimateServiceBlackBoxData adapter(EUnitVersion_Kela, EUnitType_Kel); }
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BlackBoxAdapterTest, ItIsInitializedThenLearnsTheFansThenTheTagIsWatched) {
  EXPECT_EQ(InitWithFans(2), 1u);
  EXPECT_EQ(m_blackBox.isInitialized(), 1u);
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaSysLogPrintE", kInfo, 131143, "BlackBoxData::init(): blackbox initialized successfully"},
                           {"AaSysLogPrintE", kDebug, 131143, "BlackBox data collecting initialized"},
                           {"AaSysLogPrintE", kDebug, 131143, "BlackBoxData::addFan(): fanName GAR_FAN2"},
                           {"AaSysLogPrintE", kDebug, 131143, "BlackBoxData::addFan(): fanName GAR_FAN1"},
                           {"AaConfigTagRegister", kLinkTag}}));
}

TEST_F(BlackBoxAdapterTest, OnlyTheFirstFansAreAdded) {
  InitWithFans(2);
  EXPECT_EQ(Columns(), "#                  \tGAR_FAN1\tGAR_FAN2\t");
}

TEST_F(BlackBoxAdapterTest, ABoardMayHaveNoFans) {
  EXPECT_EQ(InitWithFans(0), 1u);
  EXPECT_EQ(Columns(), "#                  \t");
}

TEST_F(BlackBoxAdapterTest, FansCanBeAddedLater) {
  Init();
  m_adapter.AddFansToBlackBox(m_fans, 3);
  EXPECT_EQ(Columns(), "#                  \tGAR_FAN1\tGAR_FAN2\tGAR_FAN3\t");
}

TEST_F(BlackBoxAdapterTest, TheUnitTypeReachesTheBlackBox) {
  ClimateServiceBlackBoxData adapter(EUnitVersion_Pivoa, EUnitType_Pivo);
  EXPECT_EQ(adapter.InitBlackBoxData(m_fans, 0), 1u);
  adapter.createDataFiles();
  EXPECT_NE(File(kBoardFile).find("PSU DATA"), std::string::npos);
}

TEST_F(BlackBoxAdapterTest, AFailedStartLeavesFansAndTagAlone) {
  fake::RemoveTag("app.hwapi.blackbox.oam.sfp.file");
  EXPECT_EQ(InitWithFans(2), 0u);
  EXPECT_EQ(fake::LogLines().back(),
            Line(kError, "BlackBox should be used in this HW, but there was some problem when initializing it"));
  EXPECT_THAT(fake::Calls("AaConfigTagRegister"), IsEmpty());
  EXPECT_EQ(Columns(), "#                  \t");
}

TEST_F(BlackBoxAdapterTest, WatchingTheTagIsLogged) {
  m_adapter.RegisterTagObserver();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kInfo, "Registered observer for tag " + kLinkTag)));
}

TEST_F(BlackBoxAdapterTest, ATagThatCannotBeWatchedIsAnErrorAndNoMore) {
  fake::FailCall("AaConfigTagRegister", 1, 5);
  EXPECT_EQ(InitWithFans(0), 1u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, "AaConfigTagRegister " + kLinkTag + " failed, ret=5"));
}

TEST_F(BlackBoxAdapterTest, AResultBelowZeroOfTheObserverIsAFailureToo) {
  fake::FailCall("AaConfigTagRegister", 1, -5);
  InitWithFans(0);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, "AaConfigTagRegister " + kLinkTag + " failed, ret=-5"));
}

TEST_F(BlackBoxAdapterTest, RecordingBeginsThroughTheAdapter) {
  InitWithFans(1);
  m_adapter.EnableTemperatureTrace();
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 1u);
}

TEST_F(BlackBoxAdapterTest, SpeedsAndTheirErrorsReachTheBlackBox) {
  InitWithFans(2);
  m_adapter.EnableTemperatureTrace();
  m_adapter.AddFanSpeed("GAR_FAN1", 3000);
  m_adapter.AddFanSpeedError("GAR_FAN2");
  m_adapter.createDataFiles();
  EXPECT_NE(File(kTraceFile).find("Z\t3000\terror\t\n"), std::string::npos);
}

TEST_F(BlackBoxAdapterTest, FilesAreNotWrittenWithoutABlackBox) {
  fake::Clear();
  m_adapter.createDataFiles();
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

/// The observer of the tag, which runs on a platform thread.
class BootImageLinkTest : public BlackBoxAdapterTest {
 protected:
  template <typename T>
  static void Observe(const T& value) {
    ClimateServiceBlackBoxData::TagObserver(kLinkTag.c_str(), &value, sizeof(value));
  }
};

TEST_F(BootImageLinkTest, TheValueZeroIsIgnored) {
  fake::Clear();
  Observe(u32{0});
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BootImageLinkTest, AMissingValueCountsAsZero) {
  fake::Clear();
  ClimateServiceBlackBoxData::TagObserver(kLinkTag.c_str(), nullptr, 0);
  ClimateServiceBlackBoxData::TagObserver(kLinkTag.c_str(), nullptr, 4);
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BootImageLinkTest, AnyOtherValueIsLogged) {
  Observe(u32{1});
  Observe(u32{0xFFFFFFFF});
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, "TagObserver: tag " + kLinkTag + " has been set, value = 1"),
                          Line(kDebug, "TagObserver: tag " + kLinkTag + " has been set, value = -1")));
}

TEST_F(BootImageLinkTest, TheWorkIsHandedOverToTheServiceItself) {
  Observe(u32{1});
  const fake::Message expected = {
      .id = kNotification, .payload = fake::Bytes(92, 0), .sender = kService, .receiver = kService};
  EXPECT_THAT(fake::SentMessages(), ElementsAre(expected));
}

TEST_F(BootImageLinkTest, TheServiceIsTheOneOnTheOwnNode) {
  fake::SetOwnNid(0x0304);
  Observe(u32{1});
  ASSERT_EQ(fake::SentMessages().size(), 1u);
  EXPECT_EQ(fake::SentMessages()[0].receiver, 0x030404B6u);
  EXPECT_EQ(fake::SentMessages()[0].sender, 0x030404B6u);
}

TEST_F(BootImageLinkTest, TheObserverWritesNoFile) {
  InitWithFans(0);
  fake::Clear();
  Observe(u32{1});
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaConfigTagPublicSet"}), IsEmpty());
}

TEST_F(BootImageLinkTest, AShortValueIsFilledWithZeros) {
  Observe(u8{0});
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  Observe(u8{7});
  EXPECT_TRUE(fake::Logged(kDebug, "TagObserver: tag " + kLinkTag + " has been set, value = 7"));
}

TEST_F(BootImageLinkTest, OfALongValueTheFirstFourBytesCount) {
  Observe(std::uint64_t{0x100000000});
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(BootImageLinkTest, ANotificationThatCannotBeCreatedIsFatal) {
  fake::FailCall("AaSysComMsgCreate");
  try {
    Observe(u32{1});
    ADD_FAILURE() << "no assertion";
  } catch (const fake::AssertionFailed& failed) {
    EXPECT_EQ(failed.expression, "notifPayload != GLO_NULL");
  }
}

TEST_F(BootImageLinkTest, TheFilesAreWrittenThenTheTagIsSetBackToZero) {
  InitWithFans(0);
  Forget();
  m_adapter.HandleConfigTagSetNotif();
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaFileClose", kBoardFile}, {"AaConfigTagPublicSet", kLinkTag, fake::Bytes(4, 0)}}));
  EXPECT_EQ(fake::Calls("AaConfigTagPublicSet").size(), 1u);
}

TEST_F(BootImageLinkTest, ATagThatCannotBeSetBackIsAWarning) {
  fake::FailCall("AaConfigTagPublicSet", 1, 22);
  m_adapter.HandleConfigTagSetNotif();
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kWarning, "AaConfigTagPublicSet() returned an error: 22 when setting tag " + kLinkTag)));
}

TEST_F(BootImageLinkTest, AResultBelowZeroOfSettingItBackIsAWarningToo) {
  fake::FailCall("AaConfigTagPublicSet", 1, -22);
  m_adapter.HandleConfigTagSetNotif();
  EXPECT_THAT(
      fake::LogLines(),
      ElementsAre(Line(kWarning, "AaConfigTagPublicSet() returned an error: -22 when setting tag " + kLinkTag)));
}

TEST_F(BootImageLinkTest, TheZeroThatItSetsIsNotObservedAsALink) {
  InitWithFans(0);
  fake::SetTag(kLinkTag, 1u);
  m_adapter.HandleConfigTagSetNotif();
  EXPECT_EQ(fake::SentMessages(kNotification).size(), 1u);
  EXPECT_EQ(fake::TagValue(kLinkTag), fake::Bytes(4, 0));
}

TEST_F(BootImageLinkTest, ALinkMadeBeforeTheStartIsObserved) {
  fake::SetTag(kLinkTag, 1u);
  InitWithFans(0);
  EXPECT_EQ(fake::SentMessages(kNotification).size(), 1u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
