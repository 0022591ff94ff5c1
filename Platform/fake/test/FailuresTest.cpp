#include "AaFile.h"
#include "AaTrbl.h"
#include "fake/PlatformTest.h"

#include <stdexcept>

namespace {

using Failures = fake::PlatformTest;

int ReadRpm() {
  int rpm = 0;
  return ddal_fan_get_rpm(0, &rpm);
}

TEST_F(Failures, OnlyTheAskedForCallFails) {
  fake::SetFan(0, {});
  fake::FailCall("ddal_fan_get_rpm", 2, DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ReadRpm(), DDAL_OK);
  EXPECT_EQ(ReadRpm(), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ReadRpm(), DDAL_OK);
}

TEST_F(Failures, CallsAreCountedFromTheTimeOfAsking) {
  fake::SetFan(0, {});
  ReadRpm();
  fake::FailCall("ddal_fan_get_rpm");
  EXPECT_EQ(ReadRpm(), DDAL_ERR_IO);
}

TEST_F(Failures, EveryLaterCallFailsOnRequest) {
  fake::SetFan(0, {});
  fake::FailFrom("ddal_fan_get_rpm", 2);
  EXPECT_EQ(ReadRpm(), DDAL_OK);
  EXPECT_EQ(ReadRpm(), DDAL_ERR_IO);
  EXPECT_EQ(ReadRpm(), DDAL_ERR_IO);
}

TEST_F(Failures, StopWhenTheyAreTakenBack) {
  fake::SetFan(0, {});
  fake::FailEvery("ddal_fan_get_rpm");
  fake::StopFailing();
  EXPECT_EQ(ReadRpm(), DDAL_OK);
}

TEST_F(Failures, LeaveOutputsUntouched) {
  fake::SetTemperature(7, 41000);
  fake::FailCall("ddal_temp_get_curr");
  int thousandths = 5;
  ddal_temp_get_curr(7, &thousandths);
  EXPECT_EQ(thousandths, 5);
}

TEST_F(Failures, OfPointersAreNull) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(AaSysComMsgCreate(1, 4, 0), nullptr);
}

TEST_F(Failures, OfErrnoFunctionsAreAnInputOutputErrorUnlessSaid) {
  fake::FailCall("AaFileRemove");
  EXPECT_EQ(AaFileRemove("/a"), EIO);
}

TEST_F(Failures, OfTheTroubleshootingRegistryAreItsOwnCode) {
  fake::FailCall("AaTrblFileUnregister");
  EXPECT_EQ(AaTrblFileUnregister("a"), EAaTrblRet_Failed);
}

TEST_F(Failures, AreRecordedAsCallsToo) {
  fake::FailCall("AaFileRemove");
  AaFileRemove("/a");
  EXPECT_EQ(fake::Calls("AaFileRemove").size(), 1u);
}

TEST_F(Failures, OfFunctionsThatCannotFailAreRefused) {
  EXPECT_THROW(fake::FailCall("AaSysComMsgSend"), std::invalid_argument);
}

TEST_F(Failures, OfUnknownFunctionsAreRefused) {
  EXPECT_THROW(fake::FailCall("AaSysComMsgMake"), std::invalid_argument);
}

}  // namespace
