/// The board file: identity, counters, software builds and the history of resets.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kHistory =
    "2016-03-07T14:05:09.042Z Cold reset : User\n"
    "2016-03-08T01:02:03.004Z Watchdog reset\n";

const std::string kWholeFile =
    "TIMESTAMP: 2024-01-02T03:04:05.006Z\n"
    "PRODUCT CODE: 472999A.101\n"
    "SERIAL NUMBER: L6160500001\n"
    "ISTI: 41\n"
    "RESET COUNTER: 42\n"
    "RESET Reason and timestamp:\n" +
    kHistory +
    "SW VERSION: active: R1_2.3\n"
    "SW VERSION: passive: R1_2.2\n"
    "SW VERSION: active filesystem: /ffs/fs1\n"
    "ERRORS: ECC single-bit error counter: 43\n"
    "ERRORS: ECC double-bit error counter: 44\n";

/// A board that answers everything, and was reset twice.
class BlackBoxBoardFileTest : public InPrivateRoot<BlackBoxTest> {
 protected:
  BlackBoxBoardFileTest() {
    fake::SetUtc({.year = 2024, .month = 1, .day = 2, .hour = 3, .minute = 4, .second = 5, .millisec = 6});
    fake::Unit().productionCode = "472999A.101";
    fake::Unit().serialNumber = "L6160500001";
    fake::Board().isti = 41;
    fake::Board().resetLoopCount = 42;
    fake::Board().eccSingle = 43;
    fake::Board().eccDouble = 44;
    fake::SetFile(kBoardFile, "RESET Reason and timestamp:\n" + kHistory + "SW VERSION: active: old\n");
    Init();
  }

  void SetUp() override {
    InPrivateRoot::SetUp();
    if (IsSkipped()) return;
    WriteRealFile("/ffs/fs1/TargetBD_R1_2.3.xml");
    WriteRealFile("/ffs/fs2/TargetBD_R1_2.2.xml");
  }

  /// Lets another black box be initialized.
  static void ForgetTechlogFiles() {
    for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  }

  /// @return the board file, written anew
  std::string NewFile() {
    EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
    return File(kBoardFile);
  }

  /// @return the only line of the new board file that begins so; "" when there is none
  std::string NewLine(const std::string& beginning) {
    const std::string text = "\n" + NewFile();
    const std::size_t begin = text.find("\n" + beginning);
    if (begin == std::string::npos) return "";
    EXPECT_EQ(text.find("\n" + beginning, begin + 1), std::string::npos);
    return text.substr(begin + 1, text.find('\n', begin + 1) - begin);
  }
};

TEST_F(BlackBoxBoardFileTest, HoldsWhatTheBoardTells) { EXPECT_EQ(NewFile(), kWholeFile); }

TEST_F(BlackBoxBoardFileTest, ReplacesTheOlderOneWhole) {
  fake::SetFile(kBoardFile, std::string(10000, 'x'));
  EXPECT_EQ(NewFile(), kWholeFile);
}

TEST_F(BlackBoxBoardFileTest, WithEveryQueryFailingHoldsTheLabels) {
  for (const char* function : {"ApiGetModuleProductionCode", "ApiGetModuleSerialNumber", "ddal_devicetree_get_isti",
                               "ddal_boot_get_reset_loop_count", "ddal_boot_get_linux_active",
                               "ddal_devicetree_get_ecc_single", "ddal_devicetree_get_ecc_double"}) {
    fake::FailEvery(function);
  }
  EXPECT_EQ(NewFile(),
            "TIMESTAMP: 2024-01-02T03:04:05.006Z\nPRODUCT CODE:\nSERIAL NUMBER:\nISTI:\nRESET COUNTER:\n"
            "RESET Reason and timestamp:\n" +
                kHistory +
                "SW VERSION: active:\nSW VERSION: passive:\nSW VERSION: active filesystem:\n"
                "ERRORS: ECC single-bit error counter:\nERRORS: ECC double-bit error counter:\n");
}

TEST_F(BlackBoxBoardFileTest, EverythingIsAskedOnceInTheOrderOfTheLines) {
  m_blackBox.createBlackboxFile();
  std::vector<fake::Call> calls = fake::Calls();
  std::erase_if(calls, [](const fake::Call& call) { return call.function == "AaSysLogPrintE"; });
  const std::vector<fake::Call> expected = {
      {"AaFileOpen", kBoardFile, "w"},       {"AaUtcTimeGet"},
      {"ApiGetModuleProductionCode", 100},   {"ApiGetModuleSerialNumber", 100},
      {"ddal_devicetree_get_isti", 0},       {"ddal_boot_get_reset_loop_count"},
      {"ddal_boot_get_linux_active"},        {"ddal_boot_get_linux_active"},
      {"ddal_devicetree_get_ecc_single", 0}, {"ddal_devicetree_get_ecc_double", 0},
      Written(kWholeFile, kBoardFile),       {"AaFileClose", kBoardFile}};
  EXPECT_EQ(calls, expected);
}

TEST_F(BlackBoxBoardFileTest, CreationIsLoggedBeforeTheFileIsClosed) {
  m_blackBox.createBlackboxFile();
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileWrite"},
                                   {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143,
                                    "BlackBoxData::createBlackboxFile(): " + kBoardFile + " file has been created"},
                                   {"AaFileClose", kBoardFile}}));
}

TEST_F(BlackBoxBoardFileTest, OfABoardThatAnswersEverythingNothingElseIsLogged) {
  m_blackBox.createBlackboxFile();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "GetBtsSoftwareVersion: active SW build: R1_2.3"),
                                            Line(kDebug, "GetBtsSoftwareVersion: passive SW build: R1_2.2"),
                                            Line(kDebug, "BlackBoxData::createBlackboxFile(): " + kBoardFile +
                                                             " file has been created")));
}

TEST_F(BlackBoxBoardFileTest, ThatCannotBeCreatedIsAnError) {
  fake::FailCall("AaFileOpen");
  EXPECT_EQ(m_blackBox.createBlackboxFile(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kError, "BlackBoxData::createBlackboxFile(): failed to create file " + kBoardFile)));
}

TEST_F(BlackBoxBoardFileTest, ThatCannotBeCreatedAsksNothing) {
  fake::FailCall("AaFileOpen");
  m_blackBox.createBlackboxFile();
  EXPECT_THAT(fake::Calls({"AaUtcTimeGet", "ApiGetModuleProductionCode", "AaFileWrite", "AaFileClose"}), IsEmpty());
}

TEST_F(BlackBoxBoardFileTest, WithoutAClockHasATimeOfZeros) {
  fake::FailCall("AaUtcTimeGet");
  EXPECT_EQ(NewLine("TIMESTAMP:"), "TIMESTAMP: 0000-00-00T00:00:00.000Z\n");
}

TEST_F(BlackBoxBoardFileTest, NegativeCountersStaySo) {
  fake::Board().isti = -5;
  EXPECT_EQ(NewLine("ISTI:"), "ISTI: -5\n");
}

TEST_F(BlackBoxBoardFileTest, ALongTextKeepsItsFirst99Characters) {
  fake::Unit().serialNumber = std::string(99, 's') + "lost";
  EXPECT_EQ(NewLine("SERIAL NUMBER:"), "SERIAL NUMBER: " + std::string(99, 's') + "\n");
}

TEST_F(BlackBoxBoardFileTest, ATextWithoutItsZeroKeepsItsFirst99Characters) {
  fake::Unit().unterminated = true;
  fake::Unit().productionCode = std::string(99, 'p') + "-lost";
  fake::Unit().serialNumber = std::string(99, 's') + "-lost";
  EXPECT_EQ(NewLine("PRODUCT CODE:"), "PRODUCT CODE: " + std::string(99, 'p') + "\n");
  EXPECT_EQ(NewLine("SERIAL NUMBER:"), "SERIAL NUMBER: " + std::string(99, 's') + "\n");
}

TEST_F(BlackBoxBoardFileTest, AnEmptyTextIsAText) {
  fake::Unit().productionCode = "";
  EXPECT_EQ(NewLine("PRODUCT CODE:"), "PRODUCT CODE: \n");
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(BlackBoxBoardFileTest, WithoutResetsHasTheHeaderAlone) {
  fake::RemoveAll(kBoardFile);
  ForgetTechlogFiles();
  BlackBoxData unreset;
  EXPECT_EQ(unreset.init(EUnitType_Kel), 1u);
  unreset.createBlackboxFile();
  EXPECT_THAT(File(kBoardFile), HasSubstr("\nRESET Reason and timestamp:\nSW VERSION: active: R1_2.3\n"));
}

TEST_F(BlackBoxBoardFileTest, OnTheSecondFileSystemSaysSo) {
  fake::Board().activeFileSystem = 54;
  EXPECT_EQ(NewLine("SW VERSION: active filesystem:"), "SW VERSION: active filesystem: /ffs/fs2\n");
}

TEST_F(BlackBoxBoardFileTest, OnAnyOtherFileSystemCountsAsTheSecond) {
  fake::Board().activeFileSystem = 0;
  EXPECT_EQ(NewLine("SW VERSION: active filesystem:"), "SW VERSION: active filesystem: /ffs/fs2\n");
}

TEST_F(BlackBoxBoardFileTest, HasNoProductDataOnOtherUnits) {
  for (const EUnitType type : {EUnitType_Kel, EUnitType_Zun}) {
    BlackBoxData other;
    ForgetTechlogFiles();
    EXPECT_EQ(other.init(type), 1u);
    EXPECT_EQ(other.createBlackboxFile(), 1u);
    EXPECT_EQ(File(kBoardFile), kWholeFile);
  }
  EXPECT_THAT(fake::Calls({"ddal_psu_get_product_data", "ddal_filter_get_product_data"}), IsEmpty());
}

TEST_F(BlackBoxBoardFileTest, ExistsWhenItCanBeOpened) {
  EXPECT_EQ(m_blackBox.blackBoxFileExists(), 1u);
  EXPECT_THAT(fake::Calls(),
              ElementsAre(fake::Call("AaFileOpen", kBoardFile, "r"), fake::Call("AaFileClose", kBoardFile)));
}

TEST_F(BlackBoxBoardFileTest, DoesNotExistWhenItCannotBeOpened) {
  fake::RemoveAll(kBoardFile);
  EXPECT_EQ(m_blackBox.blackBoxFileExists(), 0u);
}

/// A query that fails, and what the file and the log say then.
struct MissingValue {
  const char* function;
  unsigned call;  ///< which call of that function fails
  int result;
  const char* line;  ///< of the whole file, replaced by its label
  const char* label;
  EAaSysLogSeverityLevel level;
  const char* what;
};

void PrintTo(const MissingValue& row, std::ostream* out) { *out << row.function << " #" << row.call; }

class MissingBoardValueTest : public BlackBoxBoardFileTest, public testing::WithParamInterface<MissingValue> {};

TEST_P(MissingBoardValueTest, LeavesItsLabelAndOneLogLine) {
  const MissingValue& row = GetParam();
  std::string expected = kWholeFile;
  expected.replace(expected.find(row.line), std::string(row.line).size(), row.label);
  fake::FailCall(row.function, row.call, row.result);
  EXPECT_EQ(NewFile(), expected);
  std::vector<fake::LogLine> lines = fake::LogLines();
  std::erase_if(lines, [](const fake::LogLine& line) { return line.level == kDebug; });
  EXPECT_THAT(lines, ElementsAre(Line(row.level,
                                      std::string("BlackBoxData::createBlackboxFile(): failed to get ") + row.what)));
}

INSTANTIATE_TEST_SUITE_P(
    Queries, MissingBoardValueTest,
    testing::Values(MissingValue{"ApiGetModuleProductionCode", 1, 0, "PRODUCT CODE: 472999A.101\n", "PRODUCT CODE:\n",
                                 EAaSysLogSeverityLevel_Error, "product code"},
                    MissingValue{"ApiGetModuleProductionCode", 1, 2, "PRODUCT CODE: 472999A.101\n", "PRODUCT CODE:\n",
                                 EAaSysLogSeverityLevel_Error, "product code"},
                    MissingValue{"ApiGetModuleSerialNumber", 1, 0, "SERIAL NUMBER: L6160500001\n", "SERIAL NUMBER:\n",
                                 EAaSysLogSeverityLevel_Error, "serial number"},
                    MissingValue{"ApiGetModuleSerialNumber", 1, -1, "SERIAL NUMBER: L6160500001\n", "SERIAL NUMBER:\n",
                                 EAaSysLogSeverityLevel_Error, "serial number"},
                    MissingValue{"ddal_devicetree_get_isti", 1, 1, "ISTI: 41\n", "ISTI:\n",
                                 EAaSysLogSeverityLevel_Error, "ISTI from devicetree"},
                    MissingValue{"ddal_boot_get_reset_loop_count", 1, -1, "RESET COUNTER: 42\n", "RESET COUNTER:\n",
                                 EAaSysLogSeverityLevel_Error, "reset counter from devicetree"},
                    MissingValue{"ddal_boot_get_linux_active", 2, 1, "SW VERSION: active filesystem: /ffs/fs1\n",
                                 "SW VERSION: active filesystem:\n", EAaSysLogSeverityLevel_Warning,
                                 "active SW filesystem"},
                    MissingValue{"ddal_devicetree_get_ecc_single", 1, 1, "ERRORS: ECC single-bit error counter: 43\n",
                                 "ERRORS: ECC single-bit error counter:\n", EAaSysLogSeverityLevel_Error,
                                 "ECC single-bit error counter from devicetree"},
                    MissingValue{"ddal_devicetree_get_ecc_double", 1, -7, "ERRORS: ECC double-bit error counter: 44\n",
                                 "ERRORS: ECC double-bit error counter:\n", EAaSysLogSeverityLevel_Error,
                                 "ECC double-bit error counter from devicetree"}));

TEST_F(BlackBoxBoardFileTest, WithoutTheActiveBuildHasItsLabelAndAnError) {
  std::rename("/ffs/fs1/TargetBD_R1_2.3.xml", "/ffs/fs1/other.xml");
  EXPECT_EQ(NewLine("SW VERSION: active:"), "SW VERSION: active:\n");
  EXPECT_THAT(fake::LogTexts(kError),
              ElementsAre("BlackBoxData::createBlackboxFile(): failed to get active SW version"));
  EXPECT_THAT(fake::LogTexts(kWarning), IsEmpty());
}

TEST_F(BlackBoxBoardFileTest, WithoutThePassiveBuildHasItsLabelAndAWarning) {
  std::rename("/ffs/fs2", "/ffs/unmounted");
  EXPECT_EQ(NewLine("SW VERSION: passive:"), "SW VERSION: passive:\n");
  EXPECT_THAT(fake::LogTexts(kWarning),
              ElementsAre("BlackBoxData::createBlackboxFile(): failed to get passive SW version"));
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(BlackBoxBoardFileTest, WithoutTheActiveFileSystemHasNoBuilds) {
  fake::FailCall("ddal_boot_get_linux_active");
  EXPECT_THAT(NewFile(), HasSubstr("SW VERSION: active:\nSW VERSION: passive:\n"
                                   "SW VERSION: active filesystem: /ffs/fs1\n"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
