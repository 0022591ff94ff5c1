/// The configuration file, which tells other tools where the black-box files are.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

const std::string kWanted =
    "# temperature log for blackbox\n"
    "temp=/ffs/run/config/lifedata/blackbox_temperature\n"
    "# alarm log for blackbox\n"
    "alarm=/ffs/run/config/lifedata/blackbox_alarms\n"
    "# sfp log for blackbox\n"
    "sfp=/ffs/run/config/lifedata/blackbox_sfp\n"
    "# blackbox data file\n"
    "blackbox=/ffs/run/config/lifedata/blackbox\n";

/// A black box that knows its paths, and no configuration file.
class BlackBoxConfigFileTest : public BlackBoxTest {
 protected:
  BlackBoxConfigFileTest() {
    Init();
    fake::RemoveAll(kConfigFile);
  }

  /// @return the calls that touch files, for a file with that content
  std::vector<fake::Call> FileCallsWith(const std::string& content) {
    fake::SetFile(kConfigFile, content);
    EXPECT_EQ(m_blackBox.createConfigFile(), 1u);
    return fake::Calls({"AaFileOpen", "AaFileWrite", "AaFileClose"});
  }

  const fake::LogLine m_created =
      Line(kDebug, "BlackBoxData::createConfigFile(): configuration file needs to be created");
  const fake::LogLine m_updated =
      Line(kDebug, "BlackBoxData::createConfigFile(): configuration file needs to be updated");
  const std::vector<fake::Call> m_readOnly = {{"AaFileOpen", kConfigFile, "r"}, {"AaFileClose", kConfigFile}};
};

TEST_F(BlackBoxConfigFileTest, IsWrittenWhenThereIsNone) {
  EXPECT_EQ(m_blackBox.createConfigFile(), 1u);
  EXPECT_EQ(File(kConfigFile), kWanted);
}

TEST_F(BlackBoxConfigFileTest, CreationLogsWhatIsInIt) {
  m_blackBox.createConfigFile();
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(m_created, Line(kDebug, "BlackBoxData::createConfigFile(): " + kConfigFile + " prepared"),
                          Line(kDebug, "BlackBoxData::createConfigFile(): temperature file: " + kTraceFile),
                          Line(kDebug, "BlackBoxData::createConfigFile(): alarm file: " + kAlarmsFile),
                          Line(kDebug, "BlackBoxData::createConfigFile(): sfp file: " + kSfpFile),
                          Line(kDebug, "BlackBoxData::createConfigFile(): blackbox file: " + kBoardFile)));
}

TEST_F(BlackBoxConfigFileTest, IsWrittenAtOnceAndClosed) {
  m_blackBox.createConfigFile();
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileWrite", "AaFileClose"}),
              ElementsAre(fake::Call("AaFileOpen", kConfigFile, "r"), fake::Call("AaFileOpen", kConfigFile, "w"),
                          Written(kWanted, kConfigFile), fake::Call("AaFileClose", kConfigFile)));
}

TEST_F(BlackBoxConfigFileTest, IsClosedBeforeItCountsAsPrepared) {
  m_blackBox.createConfigFile();
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileClose", kConfigFile},
                                   {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143,
                                    "BlackBoxData::createConfigFile(): " + kConfigFile + " prepared"}}));
}

TEST_F(BlackBoxConfigFileTest, TheRightOneIsLeftUntouched) {
  EXPECT_EQ(FileCallsWith(kWanted), m_readOnly);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, "BlackBoxData::createConfigFile(): " + kConfigFile + " was ok")));
}

TEST_F(BlackBoxConfigFileTest, IsReadInLinesOf256Bytes) {
  FileCallsWith(kWanted);
  EXPECT_EQ(fake::Calls("AaFileReadLine"), (std::vector<fake::Call>(9, {"AaFileReadLine", 256, kConfigFile})));
}

TEST_F(BlackBoxConfigFileTest, IsReadToItsEndAlsoPastTheWantedText) {
  FileCallsWith(kWanted + std::string(99, '\n'));
  EXPECT_EQ(fake::Calls("AaFileReadLine").size(), 8u + 99u + 1u);
}

TEST_F(BlackBoxConfigFileTest, IsClosedBeforeItCountsAsToBeUpdated) {
  FileCallsWith("other");
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileReadLine", 256, kConfigFile},
                                   {"AaFileClose", kConfigFile},
                                   {"AaSysLogPrintE", kDebug, 131143, m_updated.text},
                                   {"AaFileOpen", kConfigFile, "w"}}));
}

/// A configuration file that is not right.
class WrongConfigFileTest : public BlackBoxConfigFileTest, public testing::WithParamInterface<std::string> {};

TEST_P(WrongConfigFileTest, IsRewritten) {
  FileCallsWith(GetParam());
  EXPECT_EQ(File(kConfigFile), kWanted);
  EXPECT_EQ(fake::LogLines().front(), m_updated);
}

INSTANTIATE_TEST_SUITE_P(Content, WrongConfigFileTest,
                         testing::Values("", kWanted + "\n", kWanted + "more=/a\n", kWanted + kWanted,
                                         kWanted.substr(0, kWanted.size() - 1), kWanted.substr(1),
                                         "# temperature log for blackbox\n",
                                         kWanted.substr(0, kWanted.find("sfp=")) +
                                             kWanted.substr(kWanted.find("# blackbox data file"))));

TEST_F(BlackBoxConfigFileTest, WithAnotherPathIsRewritten) {
  std::string other = kWanted;
  other.replace(other.find("blackbox_sfp"), 12, "blackbox_old");
  FileCallsWith(other);
  EXPECT_EQ(File(kConfigFile), kWanted);
}

TEST_F(BlackBoxConfigFileTest, AFileThatCannotBeReadToItsEndIsRewritten) {
  fake::FailCall("AaFileReadLine", 3);
  FileCallsWith(kWanted);
  EXPECT_EQ(fake::LogLines().front(), m_updated);
  EXPECT_EQ(File(kConfigFile), kWanted);
}

TEST_F(BlackBoxConfigFileTest, ThatCannotBeWrittenIsAFailure) {
  fake::FailCall("AaFileOpen", 2);
  EXPECT_EQ(m_blackBox.createConfigFile(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(m_created, Line(kError, "BlackBoxData::createConfigFile(): Failed to open " + kConfigFile)));
}

TEST_F(BlackBoxConfigFileTest, ALineLongerThanTheBufferIsComparedWhole) {
  fake::SetTag("app.hwapi.blackbox.sfp.file", kLifedata + std::string(600, 'p') + "/sfp");
  for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  Init();
  EXPECT_EQ(m_blackBox.createConfigFile(), 1u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, "BlackBoxData::createConfigFile(): " + kConfigFile + " was ok")));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
