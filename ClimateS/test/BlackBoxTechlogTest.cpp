/// What the troubleshooting service asks before it collects a file.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kName = "BlackBoxData::prepareFileForTechlog(): ";

/// An initialized black box without any file, and the logs that it copies.
class BlackBoxTechlogTest : public BlackBoxTest {
 protected:
  explicit BlackBoxTechlogTest(BlackBoxData* blackBox = nullptr) : BlackBoxTest(blackBox) {
    fake::SetFile(kOamAlarmsFile, "the O&M side's");
    fake::SetFile(kOamSfpFile, "the O&M side's");
    Init();
  }

  void ExpectReady(const std::string& name) {
    EXPECT_EQ(m_blackBox.prepareFileForTechlog(name.c_str()), 0);
    EXPECT_EQ(fake::LogLines().back(), Line(kDebug, kName + name + " file is ready for techlog upload"));
  }
  void ExpectNotReady(const std::string& name) {
    EXPECT_EQ(m_blackBox.prepareFileForTechlog(name.c_str()), 2);
    EXPECT_EQ(fake::LogLines().back(), Line(kWarning, kName + name + " file is not ready for techlog upload"));
  }

  /// @return whether a line of that operation was logged
  static bool Ran(const std::string& operation) {
    for (const fake::LogLine& line : fake::LogLines()) {
      if (line.text.starts_with("BlackBoxData::" + operation + "(): ")) return true;
    }
    return false;
  }
};

/// A file of the black box and the operation that makes it.
struct TechlogFile {
  const char* operation;
  std::string path;
  const char* failing;  ///< the call that lets the operation fail
  unsigned call;        ///< which one
};

void PrintTo(const TechlogFile& row, std::ostream* out) { *out << row.path; }

class BlackBoxTechlogFileTest : public BlackBoxTechlogTest, public testing::WithParamInterface<TechlogFile> {
 protected:
  const std::string m_name = BlackBoxData::basename(GetParam().path);
};

TEST_P(BlackBoxTechlogFileTest, ThatExistsIsReady) {
  fake::SetFile(GetParam().path, "as it is");
  ExpectReady(m_name);
  EXPECT_EQ(File(GetParam().path), "as it is");
}

TEST_P(BlackBoxTechlogFileTest, ThatExistsIsOpenedOnceToReadAndClosed) {
  fake::SetFile(GetParam().path, "as it is");
  m_blackBox.prepareFileForTechlog(m_name.c_str());
  std::vector<fake::Call> calls = fake::Calls();
  std::erase_if(calls, [](const fake::Call& call) { return call.function == "AaSysLogPrintE"; });
  EXPECT_THAT(calls,
              ElementsAre(fake::Call("AaFileOpen", GetParam().path, "r"), fake::Call("AaFileClose", GetParam().path)));
}

TEST_P(BlackBoxTechlogFileTest, ThatExistsLogsNothingElse) {
  fake::SetFile(GetParam().path, "as it is");
  m_blackBox.prepareFileForTechlog(m_name.c_str());
  EXPECT_EQ(fake::LogLines().size(), 1u);
}

TEST_P(BlackBoxTechlogFileTest, ThatIsMissingIsMade) {
  ExpectReady(m_name);
  EXPECT_TRUE(Ran(GetParam().operation));
  EXPECT_NE(File(GetParam().path), "(no file)");
}

TEST_P(BlackBoxTechlogFileTest, ThatCannotBeMadeIsNotReady) {
  fake::FailCall(GetParam().failing, GetParam().call);
  ExpectNotReady(m_name);
  EXPECT_TRUE(Ran(GetParam().operation));
}

TEST_P(BlackBoxTechlogFileTest, LeavesTheOtherFilesAlone) {
  const auto before = fake::FilePaths().size();
  m_blackBox.prepareFileForTechlog(m_name.c_str());
  EXPECT_EQ(fake::FilePaths().size(), before + 1);
}

TEST_P(BlackBoxTechlogFileTest, LeavesNoFileOpen) {
  const auto before = fake::OpenFiles();
  m_blackBox.prepareFileForTechlog(m_name.c_str());
  EXPECT_EQ(fake::OpenFiles(), before);
}

INSTANTIATE_TEST_SUITE_P(Files, BlackBoxTechlogFileTest,
                         testing::Values(TechlogFile{"createBlackboxFile", kBoardFile, "AaFileOpen", 2},
                                         TechlogFile{"writeTempAndSpeedDataToFile", kTraceFile, "AaFileOpen", 2},
                                         TechlogFile{"copyAlarmsFile", kAlarmsFile, "AaFileCopy", 1},
                                         TechlogFile{"copySfpFile", kSfpFile, "AaFileCopy", 1}));

TEST_F(BlackBoxTechlogTest, WithoutTheirAlarmLogOursIsNotReady) {
  fake::RemoveAll(kOamAlarmsFile);
  ExpectNotReady("blackbox_alarms");
}

TEST_F(BlackBoxTechlogTest, WithoutTheirSfpLogOursIsReady) {
  fake::RemoveAll(kOamSfpFile);
  ExpectReady("blackbox_sfp");
  EXPECT_FALSE(Ran("copySfpFile"));
  EXPECT_EQ(File(kSfpFile), "(no file)");
}

TEST_F(BlackBoxTechlogTest, APartOfAPathIsEnough) {
  fake::SetFile(kSfpFile, "x");
  ExpectReady("_sf");
}

/// A name that occurs in several paths, and the file that is meant.
struct Ambiguous {
  const char* name;
  const char* path;
};

class AmbiguousNameTest : public BlackBoxTest, public testing::WithParamInterface<Ambiguous> {
 protected:
  AmbiguousNameTest() {
    fake::SetTag("app.hwapi.blackbox.file", "/f/1");
    fake::SetTag("app.hwapi.blackbox.temperature.file", "/f/12");
    fake::SetTag("app.hwapi.blackbox.alarms.file", "/f/123");
    fake::SetTag("app.hwapi.blackbox.sfp.file", "/f/1234");
    fake::MakeDir("/f");
    fake::SetFile(kOamAlarmsFile, "x");
    fake::SetFile(kOamSfpFile, "x");
    Init();
  }
};

TEST_P(AmbiguousNameTest, MeansTheFirstFileWhosePathContainsIt) {
  const auto before = fake::FilePaths();
  EXPECT_EQ(m_blackBox.prepareFileForTechlog(GetParam().name), 0);
  std::vector<std::string> made = fake::FilePaths();
  std::erase_if(made, [&](const std::string& path) { return std::ranges::find(before, path) != before.end(); });
  EXPECT_THAT(made, ElementsAre(GetParam().path));
}

INSTANTIATE_TEST_SUITE_P(Names, AmbiguousNameTest,
                         testing::Values(Ambiguous{"1", "/f/1"}, Ambiguous{"f/", "/f/1"}, Ambiguous{"", "/f/1"},
                                         Ambiguous{"12", "/f/12"}, Ambiguous{"123", "/f/123"},
                                         Ambiguous{"4", "/f/1234"}));

TEST_F(BlackBoxTechlogTest, AStoredFileIsReady) {
  fake::SetFile("/tmp/x", "to be kept");
  EXPECT_EQ(m_blackBox.copyFile(2, "/tmp/x", "key"), 1u);
  const std::string name = fake::TrblFiles().back().name;
  ExpectReady(name);
  EXPECT_TRUE(fake::Logged(kDebug, kName + name + " file is a stored file"));
}

TEST_F(BlackBoxTechlogTest, AnUnknownFileIsNotReady) {
  EXPECT_EQ(m_blackBox.prepareFileForTechlog("core.1"), 2);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, kName + "unknown file: core.1"),
                                            Line(kWarning, kName + "core.1 file is not ready for techlog upload")));
}

TEST_F(BlackBoxTechlogTest, NoNameCountsAsTheEmptyOne) {
  EXPECT_EQ(m_blackBox.prepareFileForTechlog(nullptr), 0);
  EXPECT_TRUE(Ran("createBlackboxFile"));
}

/// The callbacks, which use the process's black box.
class BlackBoxTechlogCallbackTest : public BlackBoxTechlogTest {
 protected:
  BlackBoxTechlogCallbackTest() : BlackBoxTechlogTest(BlackBoxData::getInstance()) {}
};

TEST_F(BlackBoxTechlogCallbackTest, PrepareMakesTheFile) {
  EXPECT_EQ(fake::PrepareTrblFile("blackbox"), 0);
  EXPECT_THAT(File(kBoardFile), HasSubstr("PRODUCT CODE"));
}

TEST_F(BlackBoxTechlogCallbackTest, PrepareTellsWhatIsNotReady) {
  EXPECT_EQ(techlogPrepareFileCb("core.1", nullptr), 2);
}

TEST_F(BlackBoxTechlogCallbackTest, StoreIsAlwaysOkAndDoesNothing) {
  EXPECT_EQ(techlogStoreFileCb("blackbox", nullptr), 0);
  EXPECT_EQ(techlogStoreFileCb(nullptr, this), 0);
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BlackBoxTechlogCallbackTest, DeleteDoesNothing) {
  fake::SetFile(kBoardFile, "stays");
  techlogDeleteFileCb("blackbox", nullptr);
  EXPECT_THAT(fake::Calls(), IsEmpty());
  EXPECT_EQ(File(kBoardFile), "stays");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
