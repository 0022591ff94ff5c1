/// Results below zero of the platform's functions are failures, as those above are.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>

#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;

constexpr int kResult = -1;
const std::string kSource = "/tmp/selftest.txt";
const std::string kName = "blackbox_20240615120000_selftest.txt";
const std::string kStored = kLifedata + kName;

/// @name What the black box does
///@{
void Init(BlackBoxData& blackBox) { EXPECT_EQ(blackBox.init(EUnitType_Kel), 0u); }
void InitWithoutDirectory(BlackBoxData& blackBox) {
  fake::RemoveAll("/ffs");
  Init(blackBox);
}
void WaitForTheClock(BlackBoxData& blackBox) { blackBox.startWaitingForNTPTime(0); }
void FindStoredFiles(BlackBoxData& blackBox) {
  fake::SetFile(kStored, "result");
  blackBox.registerSelfTestFiles();
}
void StoreFile(BlackBoxData& blackBox) { EXPECT_EQ(blackBox.copyFile(0, kSource.c_str(), nullptr), 0u); }
void RemoveFile(BlackBoxData& blackBox) {
  fake::SetFile(kStored, "result");
  AaTrblFileRegister(kName.c_str(), kStored.c_str(), EAaTrblFilePriority_Low, 0, nullptr, nullptr, nullptr, nullptr);
  blackBox.removeStoredFile(kStored);
}
void CopyAlarms(BlackBoxData& blackBox) {
  EXPECT_EQ(blackBox.init(EUnitType_Kel), 1u);
  EXPECT_EQ(blackBox.copyAlarmsFile(), 0u);
}
void CopyToStandby(BlackBoxData& blackBox) {
  EXPECT_EQ(blackBox.init(EUnitType_Kel), 1u);
  EXPECT_EQ(blackBox.createBlackboxFile(), 1u);
  blackBox.CopyFileToNonRunningFS();
}
void EnableTrace(BlackBoxData& blackBox) {
  EXPECT_EQ(blackBox.init(EUnitType_Kel), 1u);
  EXPECT_EQ(blackBox.enableTemperatureTrace(), 0u);
  EXPECT_EQ(blackBox.isTemperatureTraceEnabled(), 0u);
}
///@}

/// A call that fails with a result below zero, and the line that tells it.
struct Failing {
  const char* name;
  void (*run)(BlackBoxData&);
  const char* function;
  unsigned call;
  EAaSysLogSeverityLevel level;
  std::string line;

  friend std::ostream& operator<<(std::ostream& out, const Failing& row) { return out << row.name; }
};

class BlackBoxNegativeResultTest : public BlackBoxTest, public testing::WithParamInterface<Failing> {
 protected:
  BlackBoxNegativeResultTest() {
    fake::SetFile(kSource, "result");
    fake::SetFile(kOamAlarmsFile, "alarms");
    fake::MakeDir("/ffs/stb/config/lifedata");
  }
};

TEST_P(BlackBoxNegativeResultTest, IsAFailure) {
  fake::FailCall(GetParam().function, GetParam().call, kResult);
  GetParam().run(m_blackBox);
  EXPECT_THAT(fake::LogLines(), Contains(Line(GetParam().level, GetParam().line)));
}

INSTANTIATE_TEST_SUITE_P(
    Of, BlackBoxNegativeResultTest,
    testing::Values(
        Failing{"CreateDirectory", InitWithoutDirectory, "AaFileCreateDir", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::init(): Failed to get create directory " + kLifedata},
        Failing{"FirstTag", Init, "AaConfigTagGet", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::init(): Failed to get tag app.hwapi.blackbox.config.file, ret=-1"},
        Failing{"LastTag", Init, "AaConfigTagGet", 7, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::init(): Failed to get tag app.hwapi.blackbox.oam.sfp.file"},
        Failing{"Register", Init, "AaTrblFileRegister", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::init(): Failed to get register file app.hwapi.blackbox.file to AaTrbl, ret=-1"},
        Failing{"ClockThread", WaitForTheClock, "AaSysComEuCreateAndStart", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::startWaitingForNTPTime(): failed to start thread for waiting NTP time, ret = -1"},
        Failing{"RegisterFound", FindStoredFiles, "AaTrblFileRegister", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::registerSelfTestFiles(): Failed to register file '" + kName + "' to AaTrbl, ret=-1"},
        Failing{"CopyStored", StoreFile, "AaFileCopy", 1, EAaSysLogSeverityLevel_Error,
                "BlackboxData::addStoredFile(): failed to copy '" + kSource + "' to '" + kStored + "'"},
        Failing{"RegisterStored", StoreFile, "AaTrblFileRegister", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::addStoredFile(): Failed to register file '" + kName + "' to AaTrbl, ret=-1"},
        Failing{"Unregister", RemoveFile, "AaTrblFileUnregister", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::removeStoredFile(): Failed to unregister file '" + kName + "' from AaTrbl, ret=-1"},
        Failing{"Remove", RemoveFile, "AaFileRemove", 1, EAaSysLogSeverityLevel_Info,
                "BlackboxData::removeStoredFile(): failed to remove '" + kStored + "' ret=-1"},
        Failing{"CopyLog", CopyAlarms, "AaFileCopy", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::copyAlarmsFile(): failed to copy " + kOamAlarmsFile + " to " + kAlarmsFile},
        Failing{"CopyToStandby", CopyToStandby, "AaFileCopy", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::CopyFileToNonRunningFS() Blackbox file copying is not possible"},
        Failing{"SnapshotThread", EnableTrace, "AaSysComEuCreateAndStart", 1, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::enableTemperatureTrace(): failed to start thread for snapshot timeout, ret = -1"},
        Failing{"FileThread", EnableTrace, "AaSysComEuCreateAndStart", 2, EAaSysLogSeverityLevel_Error,
                "BlackBoxData::enableTemperatureTrace(): failed to start thread for file storing timeout, ret = -1"}),
    testing::PrintToStringParamName());

}  // namespace
}  // namespace ps::hwapi::common::climate
