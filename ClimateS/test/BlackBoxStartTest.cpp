/// How the black box is taken into use: its directory, its tags, the troubleshooting service, and the order of all
/// that.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class BlackBoxStartTest : public BlackBoxTest {
 protected:
  u32 InitOnce() { return m_blackBox.init(EUnitType_Kel); }
};

TEST_F(BlackBoxStartTest, ANewBlackBoxIsNotInitialized) {
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
}

TEST_F(BlackBoxStartTest, ANewBlackBoxAsksThePlatformForNothing) {
  fake::Clear();
  const BlackBoxData blackBox;
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BlackBoxStartTest, ThereIsOneForTheProcess) {
  EXPECT_NE(BlackBoxData::getInstance(), nullptr);
  EXPECT_EQ(BlackBoxData::getInstance(), BlackBoxData::getInstance());
}

TEST_F(BlackBoxStartTest, IsInitializedAfterwards) {
  EXPECT_EQ(InitOnce(), 1u);
  EXPECT_EQ(m_blackBox.isInitialized(), 1u);
}

TEST_F(BlackBoxStartTest, IsLogged) {
  InitOnce();
  EXPECT_TRUE(fake::Logged(kInfo, "BlackBoxData::init(): blackbox initialized successfully"));
}

TEST_F(BlackBoxStartTest, LogsNoErrorAndNoWarning) {
  InitOnce();
  EXPECT_THAT(fake::LogTexts(kWarning), IsEmpty());
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(BlackBoxStartTest, EveryLineHasTheFeatureOfTheService) {
  InitOnce();
  for (const fake::LogLine& line : fake::LogLines()) EXPECT_EQ(line.feature, 131143u) << line;
}

TEST_F(BlackBoxStartTest, DoesNotBeginToRecord) {
  InitOnce();
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
}

TEST_F(BlackBoxStartTest, TheStepsComeInOrder) {
  InitOnce();
  EXPECT_TRUE(fake::CalledInOrder({
      {"AaFileDirExists", kLifedata},
      {"AaConfigTagGet", "app.hwapi.blackbox.config.file"},
      {"AaConfigTagGet", "app.hwapi.blackbox.oam.sfp.file"},
      {"AaFileOpen", kConfigFile, "r"},
      {"AaFileOpen", "/ffs/run/logs/blackbox_alarms", "r"},
      {"AaFileOpen", kTraceFile, "r"},
      {"AaFileOpen", kBoardFile, "r"},
      {"AaConfigTagGetU32", "app.hwapi.online.4a7"},
      {"AaSemCreateC", 1},
      {"AaSysLogPrintE", kInfo, 131143, "BlackBoxData::init(): blackbox initialized successfully"},
      {"AaFileListDir", kLifedata},
  }));
}

TEST_F(BlackBoxStartTest, TagsAreReadAndFilesRegisteredOneAfterTheOther) {
  InitOnce();
  const auto get = [](const char* tag) {
    return fake::Call("AaConfigTagGet", std::string("app.hwapi.blackbox.") + tag);
  };
  const auto registered = [](const char* name) {
    return fake::Call("AaTrblFileRegister", name, kLifedata + name, EAaTrblFilePriority_Low, 0);
  };
  EXPECT_THAT(fake::Calls({"AaConfigTagGet", "AaTrblFileRegister"}),
              ElementsAre(get("config.file"), get("file"), registered("blackbox"), get("temperature.file"),
                          registered("blackbox_temperature"), get("alarms.file"), registered("blackbox_alarms"),
                          get("oam.alarms.file"), get("sfp.file"), registered("blackbox_sfp"), get("oam.sfp.file")));
}

TEST_F(BlackBoxStartTest, RegisteredFilesHaveTheCallbacksAndNoContext) {
  InitOnce();
  ASSERT_EQ(fake::TrblFiles().size(), 4u);
  for (const fake::TrblFile& file : fake::TrblFiles()) {
    EXPECT_EQ(file.prepare, &techlogPrepareFileCb);
    EXPECT_EQ(file.store, &techlogStoreFileCb);
    EXPECT_EQ(file.remove, &techlogDeleteFileCb);
    EXPECT_EQ(file.context, nullptr);
  }
}

TEST_F(BlackBoxStartTest, APathWithoutASlashIsItsOwnLogicalName) {
  fake::SetTag("app.hwapi.blackbox.file", std::string("plain"));
  InitOnce();
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"), Contains(fake::Call("AaTrblFileRegister", "plain", "plain", 0, 0)));
}

TEST_F(BlackBoxStartTest, EachTagsTextIsReleased) {
  InitOnce();
  EXPECT_EQ(fake::Calls("AaMemUnRefDbg").size(), 7u);
  EXPECT_EQ(fake::LiveMemory(), 0u);
}

TEST_F(BlackBoxStartTest, ADirectoryThatExistsIsNotCreated) {
  InitOnce();
  EXPECT_THAT(fake::Calls("AaFileCreateDir"), IsEmpty());
}

TEST_F(BlackBoxStartTest, AMissingDirectoryIsCreated) {
  fake::RemoveAll("/ffs");
  EXPECT_EQ(InitOnce(), 1u);
  EXPECT_THAT(fake::Calls("AaFileCreateDir"), ElementsAre(fake::Call("AaFileCreateDir", kLifedata)));
}

TEST_F(BlackBoxStartTest, ADirectoryThatCannotBeCreatedEndsIt) {
  fake::RemoveAll("/ffs");
  fake::FailCall("AaFileCreateDir", 1, 28);
  fake::ClearLog();
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
  EXPECT_THAT(
      fake::LogLines(),
      ElementsAre(Line(kError, "BlackBoxData::init(): Failed to get create directory /ffs/run/config/lifedata/")));
  EXPECT_THAT(fake::Calls("AaConfigTagGet"), IsEmpty());
}

TEST_F(BlackBoxStartTest, AConfigurationFileThatCannotBeWrittenEndsItWithoutAFurtherLine) {
  fake::FailCall("AaFileOpen", 2);
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, "BlackBoxData::createConfigFile(): Failed to open " + kConfigFile));
  EXPECT_THAT(fake::Calls("AaConfigTagGetU32"), IsEmpty());
  EXPECT_THAT(fake::Calls("AaSemCreateC"), IsEmpty());
}

TEST_F(BlackBoxStartTest, FilesOfEarlierRunsAreRegisteredLast) {
  const std::string path = kLifedata + "blackbox_20240615120000_key";
  fake::SetFile(path, "x");
  InitOnce();
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaSysLogPrintE", kInfo, 131143, "BlackBoxData::init(): blackbox initialized successfully"},
                           {"AaTrblFileRegister", "blackbox_20240615120000_key", path}}));
}

TEST_F(BlackBoxStartTest, WithoutASemaphoreTheBlackBoxWorks) {
  fake::FailCall("AaSemCreateC");
  EXPECT_EQ(InitOnce(), 1u);
  m_blackBox.takeSnapshot();
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
  EXPECT_THAT(fake::Calls("AaSemWait"), IsEmpty());
}

TEST_F(BlackBoxStartTest, ItsEndDestroysTheSemaphore) {
  {
    BlackBoxData other;
    other.init(EUnitType_Kel);
    fake::Clear();
  }
  EXPECT_EQ(fake::Calls("AaSemDestroy").size(), 1u);
}

TEST_F(BlackBoxStartTest, TheEndOfOneThatWasNeverInitializedDestroysNothing) {
  { const BlackBoxData other; }
  EXPECT_THAT(fake::Calls("AaSemDestroy"), IsEmpty());
}

const std::string kOther = "/ffs/other/file";

/// A tag, what follows its text in the line of a failure, and how often files were registered before it.
struct Tag {
  const char* name;
  bool resultLogged;
  std::size_t registeredBefore;
  const std::string& changed;  ///< file that is another one when the tag names kOther
  const char* beginning;       ///< of that file

  std::string FullName() const { return std::string("app.hwapi.blackbox.") + name; }
  friend std::ostream& operator<<(std::ostream& out, const Tag& tag) { return out << tag.name; }
};

const Tag kTags[] = {
    {.name = "config.file",
     .resultLogged = true,
     .registeredBefore = 0,
     .changed = kOther,
     .beginning = "# temperature log"},
    {.name = "file", .resultLogged = true, .registeredBefore = 0, .changed = kOther, .beginning = "TIMESTAMP: "},
    {.name = "temperature.file",
     .resultLogged = true,
     .registeredBefore = 1,
     .changed = kOther,
     .beginning = "#MINMAX:"},
    {.name = "alarms.file", .resultLogged = true, .registeredBefore = 2, .changed = kOther, .beginning = "alarms"},
    {.name = "oam.alarms.file",
     .resultLogged = false,
     .registeredBefore = 3,
     .changed = kAlarmsFile,
     .beginning = "other"},
    {.name = "sfp.file", .resultLogged = true, .registeredBefore = 3, .changed = kOther, .beginning = "sfp"},
    {.name = "oam.sfp.file", .resultLogged = false, .registeredBefore = 4, .changed = kSfpFile, .beginning = "other"},
};

class BlackBoxTagTest : public BlackBoxStartTest, public testing::WithParamInterface<Tag> {
 protected:
  static std::string Failure(int result) {
    return "BlackBoxData::init(): Failed to get tag " + GetParam().FullName() +
           (GetParam().resultLogged ? ", ret=" + std::to_string(result) : "");
  }
};

TEST_P(BlackBoxTagTest, WithoutItTheStartEndsThere) {
  fake::RemoveTag(GetParam().FullName());
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
  EXPECT_EQ(fake::Calls("AaConfigTagGet").back(), fake::Call("AaConfigTagGet", GetParam().FullName()));
  EXPECT_EQ(fake::Calls("AaTrblFileRegister").size(), GetParam().registeredBefore);
  EXPECT_THAT(fake::Calls("AaFileOpen"), IsEmpty());
}

TEST_P(BlackBoxTagTest, ItsFailureIsLogged) {
  fake::ClearLog();
  fake::AnswerTagGet(GetParam().FullName(), 13, std::nullopt);
  InitOnce();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, Failure(13))));
}

TEST_P(BlackBoxTagTest, CountsAsReadWithAValueWhateverTheResult) {
  fake::SetFile(kOamAlarmsFile, "alarms");
  fake::SetFile(kOamSfpFile, "sfp");
  for (const int result : {13, -1}) {
    fake::RemoveAll(GetParam().changed);
    fake::SetFile(kOther, "other");
    BlackBoxData blackBox;
    fake::AnswerTagGet(GetParam().FullName(), result, kOther);
    EXPECT_EQ(blackBox.init(EUnitType_Kel), 1u) << result;
    blackBox.createDataFiles();
    blackBox.writeTempAndSpeedDataToFile();
    EXPECT_THAT(File(GetParam().changed), testing::StartsWith(GetParam().beginning)) << result;
    for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  }
}

TEST_P(BlackBoxTagTest, CountsAsReadWithTheResultZeroAndNoValue) {
  fake::AnswerTagGet(GetParam().FullName(), 0, std::nullopt);
  InitOnce();
  EXPECT_FALSE(fake::HasLogLine(kError, Failure(0)));
}

TEST_F(BlackBoxStartTest, ATagOfTheOtherSideWithoutAValueIsAnEmptyPath) {
  fake::AnswerTagGet("app.hwapi.blackbox.oam.alarms.file", 0, std::nullopt);
  fake::AnswerTagGet("app.hwapi.blackbox.oam.sfp.file", 0, std::nullopt);
  Init();
  m_blackBox.createDataFiles();
  const std::string operation = "BlackBoxData::copy";
  EXPECT_THAT(
      fake::LogTexts(kWarning),
      testing::IsSupersetOf({operation + "AlarmsFile(): File  does not exist, can't create " + kAlarmsFile + ".",
                             operation + "SfpFile(): File  does not exist, can't create " + kSfpFile + "."}));
}

TEST_F(BlackBoxStartTest, TheTagOfTheConfigurationFileWithoutAValueIsAnEmptyPath) {
  fake::AnswerTagGet("app.hwapi.blackbox.config.file", 0, std::nullopt);
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, "BlackBoxData::createConfigFile(): Failed to open "));
}

INSTANTIATE_TEST_SUITE_P(Tag, BlackBoxTagTest, testing::ValuesIn(kTags),
                         [](const auto& test) { return "Number" + std::to_string(test.index + 1); });

/// A file of the technical log.
struct Collected {
  const char* tag;
  unsigned number;  ///< of its registration

  friend std::ostream& operator<<(std::ostream& out, const Collected& file) { return out << file.tag; }
};

class BlackBoxRegistrationTest : public BlackBoxStartTest, public testing::WithParamInterface<Collected> {};

TEST_P(BlackBoxRegistrationTest, ItsFailureEndsTheStart) {
  fake::ClearLog();
  fake::FailCall("AaTrblFileRegister", GetParam().number, 7);
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kError, "BlackBoxData::init(): Failed to get register file app.hwapi.blackbox." +
                                           std::string(GetParam().tag) + " to AaTrbl, ret=7")));
  EXPECT_EQ(fake::Calls({"AaConfigTagGet", "AaTrblFileRegister"}).back().function, "AaTrblFileRegister");
}

TEST_P(BlackBoxRegistrationTest, OfATagWithoutAValueEndsTheStart) {
  const std::string tag = "app.hwapi.blackbox." + std::string(GetParam().tag);
  fake::ClearLog();
  fake::AnswerTagGet(tag, 0, std::nullopt);
  EXPECT_EQ(InitOnce(), 0u);
  EXPECT_EQ(fake::Calls("AaTrblFileRegister").back(), fake::Call("AaTrblFileRegister", "", "", 0, 0));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, "BlackBoxData::init(): Failed to get register file " + tag +
                                                             " to AaTrbl, ret=1")));
}

INSTANTIATE_TEST_SUITE_P(File, BlackBoxRegistrationTest,
                         testing::Values(Collected{"file", 1}, Collected{"temperature.file", 2},
                                         Collected{"alarms.file", 3}, Collected{"sfp.file", 4}),
                         [](const auto& test) { return "Number" + std::to_string(test.param.number); });

/// Where the text of each tag goes to.
TEST_F(BlackBoxStartTest, ThePathsAreThoseOfTheTags) {
  fake::SetFile(kOamAlarmsFile, "alarms");
  fake::SetFile(kOamSfpFile, "sfp");
  Init();
  m_blackBox.createDataFiles();
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_THAT(fake::FilePaths(),
              ElementsAre(kBoardFile, kAlarmsFile, kConfigFile, kSfpFile, kTraceFile, kOamAlarmsFile, kOamSfpFile));
  EXPECT_EQ(File(kAlarmsFile), "alarms");
  EXPECT_EQ(File(kSfpFile), "sfp");
  EXPECT_EQ(File(kBoardFile).substr(0, 11), "TIMESTAMP: ");
  EXPECT_EQ(File(kTraceFile).substr(0, 8), "#MINMAX:");
}

TEST_F(BlackBoxStartTest, ThePathOfATagThatFailedIsNotTakenOver) {
  fake::RemoveTag("app.hwapi.blackbox.temperature.file");
  InitOnce();
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 0u);
  EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);  // its tag was read before
}

}  // namespace
}  // namespace ps::hwapi::common::climate
