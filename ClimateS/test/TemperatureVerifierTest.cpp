#include "TemperatureVerifier.h"

#include "HwapiException.h"
#include "fake/PlatformTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;
using testing::MatchesRegex;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

constexpr unsigned kPa1 = 37;
constexpr unsigned kNoPa = 36;
constexpr u32 kDevice = 0x50003;
constexpr u32 kRegister = 0x3268;
constexpr int kUntouched = 123456;

/// A Morvet board whose RF ASICs and chains are enabled and whose sensor shows 40 degrees.
class TemperatureVerifierTest : public fake::PlatformTest {
 protected:
  TemperatureVerifierTest() {
    fake::Unit().version = EUnitVersion{26};
    for (u32 i = 0; i < 3; ++i) {
      fake::SetRfRegister(i, kRegister, 1);
      fake::SetRfChain(i, 1);
    }
    fake::SetTemperature(kDevice, 40000);
  }

  /// Lets the sensor show three values, one after the other.
  static void Show(int first, int second, int third) {
    fake::QueueTemperatures(kDevice, {{.value = first}, {.value = second}, {.value = third}});
  }

  int Read(unsigned name = kPa1) { return m_verifier.GetCurrentTemperature(name, kDevice, &m_temperature); }

  /// @return "operation, description, code" of the OpException that an operation throws; "" when it throws none
  static std::string Failure(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const OpException& e) {
      EXPECT_STREQ(e.what(), "Operation failed");
      EXPECT_EQ(e.getFile(), "TemperatureVerifier.cpp");
      EXPECT_GT(e.getLine(), 0u);
      return e.getOpName() + ", " + e.getDescription() + ", " + std::to_string(static_cast<int>(e.getErrCode()));
    }
    return "";
  }

  static std::vector<fake::Call> DriverCalls() {
    return fake::Calls({"ddal_rf_asic_read_reg", "ddal_rf_chain_status_get", "ddal_temp_get_curr"});
  }

  TemperatureVerifier m_verifier;
  int m_temperature = kUntouched;
};

TEST_F(TemperatureVerifierTest, AGoodPaSensorGivesTheThirdReading) {
  Show(40000, 40031, 40007);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(m_temperature, 40007);
}

TEST_F(TemperatureVerifierTest, AGoodPaSensorLogsNoError) {
  Read();
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(TemperatureVerifierTest, AnotherSensorIsReadOnceAndDirectly) {
  EXPECT_EQ(Read(kNoPa), 0);
  EXPECT_EQ(m_temperature, 40000);
  EXPECT_EQ(DriverCalls(), std::vector{fake::Call("ddal_temp_get_curr", kDevice)});
}

TEST_F(TemperatureVerifierTest, AnotherSensorMayShowAnything) {
  fake::SetTemperature(kDevice, 999999);
  EXPECT_EQ(Read(kNoPa), 0);
  EXPECT_EQ(m_temperature, 999999);
}

TEST_F(TemperatureVerifierTest, AnotherSensorGivesTheDriversCode) {
  fake::FailTemperature(kDevice, -2);
  EXPECT_EQ(Read(kNoPa), -2);
  EXPECT_EQ(m_temperature, kUntouched);
}

TEST_F(TemperatureVerifierTest, AnotherSensorThatFailsIsNotLoggedHere) {
  fake::FailTemperature(kDevice, -2);
  Read(kNoPa);
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(TemperatureVerifierTest, TheBoardIsAskedForOnEveryRead) {
  Read();
  Read(kNoPa);
  EXPECT_EQ(fake::Calls("ApiGetLocalUnitVersion").size(), 2u);
}

TEST_F(TemperatureVerifierTest, TheKindOfBoardIsLoggedOnEveryRead) {
  Read(kNoPa);
  fake::Unit().version = EUnitVersion{15};
  Read(kNoPa);
  EXPECT_EQ(fake::LogTexts(kDebug),
            (std::vector<std::string>{"TemperatureVerifier::isMorvet: 1", "TemperatureVerifier::isMorvet: 0"}));
}

TEST_F(TemperatureVerifierTest, TheChecksOfAPaSensorAreLogged) {
  fake::SetRfRegister(0, kRegister, 7);
  Read();
  EXPECT_EQ(fake::LogTexts(kDebug),
            (std::vector<std::string>{"TemperatureVerifier::isMorvet: 1", "ddal_rf_asic_read_reg err'0' val'7'",
                                      "ddal_rf_chain_status_get err'0' status'1'"}));
}

TEST_F(TemperatureVerifierTest, EveryLineHasTheFeatureOfTheService) {
  Show(1, 2, 999);
  Read();
  for (const fake::LogLine& line : fake::LogLines()) EXPECT_EQ(line.feature, 131143u) << line;
}

TEST_F(TemperatureVerifierTest, ARfAsicThatReadsZeroFailsWith1004) {
  fake::SetRfRegister(0, kRegister, 0);
  EXPECT_EQ(Read(), -1004);
  EXPECT_EQ(m_temperature, kUntouched);
}

TEST_F(TemperatureVerifierTest, ARfAsicThatReadsAnyOtherValueIsEnabled) {
  fake::SetRfRegister(0, kRegister, 0x80000000);
  EXPECT_EQ(Read(), 0);
}

TEST_F(TemperatureVerifierTest, ARfAsicThatCannotBeReadFailsWith1004) {
  fake::FailCall("ddal_rf_asic_read_reg", 1, -3);
  EXPECT_EQ(Read(), -1004);
  EXPECT_TRUE(fake::Logged(kDebug, "ddal_rf_asic_read_reg err'-3' val'0'"));
}

TEST_F(TemperatureVerifierTest, AfterAFailedRfAsicNothingElseIsRead) {
  fake::SetRfRegister(0, kRegister, 0);
  Read();
  EXPECT_EQ(DriverCalls(), std::vector{fake::Call("ddal_rf_asic_read_reg", 0, 0x3268)});
}

TEST_F(TemperatureVerifierTest, ARfChainThatIsNotEnabledFailsWith1001) {
  for (const u32 status : {0u, 2u, 0xFFFFFFFFu}) {
    fake::SetRfChain(0, status);
    EXPECT_EQ(Read(), -1001) << "status " << status;
    EXPECT_EQ(m_temperature, kUntouched);
  }
}

TEST_F(TemperatureVerifierTest, ARfChainThatCannotBeReadFailsWith1001) {
  fake::FailCall("ddal_rf_chain_status_get", 1, -3);
  EXPECT_EQ(Read(), -1001);
  EXPECT_TRUE(fake::Logged(kDebug, "ddal_rf_chain_status_get err'-3' status'0'"));
}

TEST_F(TemperatureVerifierTest, AfterAFailedRfChainTheSensorIsNotRead) {
  fake::SetRfChain(0, 0);
  Read();
  EXPECT_THAT(fake::Calls("ddal_temp_get_curr"), IsEmpty());
}

TEST_F(TemperatureVerifierTest, AFailedReadingGivesTheDriversCode) {
  fake::QueueTemperatures(kDevice, {{.value = 40000}, {.value = 40000}, {.error = -2}});
  EXPECT_EQ(Read(), -2);
  EXPECT_EQ(m_temperature, kUntouched);
}

TEST_F(TemperatureVerifierTest, AfterAFailedReadingTheSensorIsNotReadAgain) {
  fake::QueueTemperatures(kDevice, {{.error = 17}, {.value = 40000}, {.value = 40000}});
  EXPECT_EQ(Read(), 17);
  EXPECT_EQ(fake::Calls("ddal_temp_get_curr").size(), 1u);
}

TEST_F(TemperatureVerifierTest, AllThreeReadingsComeBeforeTheirCheck) {
  fake::QueueTemperatures(kDevice, {{.value = 150000}, {.value = 40000}, {.error = -2}});
  EXPECT_EQ(Read(), -2);
}

TEST_F(TemperatureVerifierTest, TheRangeIsCheckedBeforeTheAgreement) {
  Show(40000, 50000, 150000);
  EXPECT_EQ(Failure([&] { m_verifier.GetValidTemperature(kDevice); }),
            "ValidTemperatureRange, Out of temperature range, -1001");
}

/// Three readings, and what a PA sensor gives for them.
struct Readings {
  int first;
  int second;
  int third;
  int result;

  friend std::ostream& operator<<(std::ostream& out, const Readings& readings) {
    return out << readings.first << ", " << readings.second << ", " << readings.third;
  }
};

class PaReadings : public TemperatureVerifierTest, public testing::WithParamInterface<Readings> {
 protected:
  int ReadThem() {
    Show(GetParam().first, GetParam().second, GetParam().third);
    return Read();
  }
};

TEST_P(PaReadings, GiveTheResult) { EXPECT_EQ(ReadThem(), GetParam().result); }

TEST_P(PaReadings, GiveTheThirdReadingOrNone) {
  const int result = ReadThem();
  EXPECT_EQ(m_temperature, result == 0 ? GetParam().third : kUntouched);
}

INSTANTIATE_TEST_SUITE_P(Agreeing, PaReadings,
                         testing::Values(Readings{40000, 40031, 40000, 0}, Readings{40031, 40000, 40015, 0},
                                         Readings{-39999, -39999, -39999, 0}, Readings{149999, 149999, 149999, 0},
                                         Readings{20000, 85536, 20000, 0}, Readings{20000, 20000, 85536, 0},
                                         Readings{0, 0, 31, 0}, Readings{-1, -32, -32, 0}));
INSTANTIATE_TEST_SUITE_P(Disagreeing, PaReadings,
                         testing::Values(Readings{40031, 40032, 40031, -1001}, Readings{40032, 40031, 40031, -1001},
                                         Readings{40031, 40031, 40032, -1001}, Readings{-1, 0, 0, -1001},
                                         Readings{40000, 50000, 60000, -1001}, Readings{0, 32768, 0, -1001}));
INSTANTIATE_TEST_SUITE_P(
    OutOfRange, PaReadings,
    testing::Values(Readings{150000, 150000, 150000, -1001}, Readings{-40000, -40000, -40000, -1001},
                    Readings{150000, 149999, 149999, -1001}, Readings{149999, 150000, 149999, -1001},
                    Readings{149999, 149999, 150000, -1001}, Readings{-40000, -39999, -39999, -1001},
                    Readings{-39999, -40000, -39999, -1001}, Readings{-39999, -39999, -40000, -1001}));

/// A PA sensor and the number of its RF ASIC and chain.
struct PaSensor {
  unsigned name;
  u32 index;

  friend std::ostream& operator<<(std::ostream& out, const PaSensor& sensor) { return out << sensor.name; }
};

class PaSensors : public TemperatureVerifierTest, public testing::WithParamInterface<PaSensor> {};

TEST_P(PaSensors, AskTheirOwnRfAsicThenTheirOwnRfChainThenTheSensorThreeTimes) {
  const fake::Call read("ddal_temp_get_curr", kDevice);
  Read(GetParam().name);
  EXPECT_EQ(DriverCalls(), (std::vector{fake::Call("ddal_rf_asic_read_reg", GetParam().index, 0x3268),
                                        fake::Call("ddal_rf_chain_status_get", GetParam().index), read, read, read}));
}

INSTANTIATE_TEST_SUITE_P(Name, PaSensors, testing::Values(PaSensor{37, 0}, PaSensor{41, 1}, PaSensor{45, 2}),
                         testing::PrintToStringParamName());

class OtherNames : public TemperatureVerifierTest, public testing::WithParamInterface<unsigned> {};

TEST_P(OtherNames, AreReadOnceAndDirectly) {
  Read(GetParam());
  EXPECT_EQ(DriverCalls(), std::vector{fake::Call("ddal_temp_get_curr", kDevice)});
}

TEST_P(OtherNames, HaveNoValidPaReading) {
  EXPECT_EQ(m_verifier.GetPaSensorsValidCurrTemp(GetParam(), kDevice), -1001);
  EXPECT_THAT(DriverCalls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Name, OtherNames, testing::Values(0u, 36u, 38u, 40u, 42u, 44u, 46u, 0xFFFFFFFFu),
                         testing::PrintToStringParamName());

class MorvetBoard : public TemperatureVerifierTest, public testing::WithParamInterface<u32> {};

TEST_P(MorvetBoard, IsOne) {
  fake::Unit().version = EUnitVersion{GetParam()};
  EXPECT_TRUE(m_verifier.isMorvet());
  EXPECT_TRUE(fake::Logged(kDebug, "TemperatureVerifier::isMorvet: 1"));
}

INSTANTIATE_TEST_SUITE_P(Version, MorvetBoard, testing::Values(26, 27, 28), testing::PrintToStringParamName());

class OtherBoard : public TemperatureVerifierTest, public testing::WithParamInterface<u32> {
 protected:
  void SetUp() override { fake::Unit().version = EUnitVersion{GetParam()}; }
};

TEST_P(OtherBoard, IsNoMorvet) {
  EXPECT_FALSE(m_verifier.isMorvet());
  EXPECT_TRUE(fake::Logged(kDebug, "TemperatureVerifier::isMorvet: 0"));
}

TEST_P(OtherBoard, APaSensorIsReadOnceAndDirectly) {
  fake::SetTemperature(kDevice, 160000);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(m_temperature, 160000);
  EXPECT_EQ(DriverCalls(), std::vector{fake::Call("ddal_temp_get_curr", kDevice)});
}

INSTANTIATE_TEST_SUITE_P(Version, OtherBoard,
                         testing::Values(0, 15, 16, 17, 18, 24, 25, 29, 30, 31, 33, 38, 39, 41, 43, 51, 58),
                         testing::PrintToStringParamName());

/// The line that a failed check of a PA sensor leaves.
class FailureLine : public TemperatureVerifierTest {
 protected:
  std::string Logged() {
    Read();
    const std::vector<std::string> errors = fake::LogTexts(kError);
    return errors.size() == 1 ? errors[0] : std::to_string(errors.size()) + " lines";
  }

  static auto Saying(const std::string& description, const std::string& operation, const std::string& code) {
    return MatchesRegex("Exception 'Operation failed' Description '" + description + "' Operatio name '" + operation +
                        "' Error code '" + code + "' in 'TemperatureVerifier\\.cpp:[1-9][0-9]*'");
  }
};

TEST_F(FailureLine, NamesTheRfAsic) {
  fake::SetRfRegister(0, kRegister, 0);
  EXPECT_THAT(Logged(), Saying("Fail/Not Enabled", "ddal_rf_asic_read_reg", "-1004"));
}

TEST_F(FailureLine, NamesTheRfChain) {
  fake::SetRfChain(0, 0);
  EXPECT_THAT(Logged(), Saying("Fail/Not Enabled", "ddal_rf_chain_status_get", "-1001"));
}

TEST_F(FailureLine, NamesTheReading) {
  fake::FailTemperature(kDevice, -2);
  EXPECT_THAT(Logged(), Saying("Fail", "ddal_temp_get_curr", "-2"));
}

TEST_F(FailureLine, NamesTheRange) {
  fake::SetTemperature(kDevice, 150000);
  EXPECT_THAT(Logged(), Saying("Out of temperature range", "ValidTemperatureRange", "-1001"));
}

TEST_F(FailureLine, NamesTheDisagreement) {
  Show(40000, 41000, 42000);
  EXPECT_THAT(Logged(), Saying("Temperatures are not same", "WhetherTemperaturesApproximatelySame", "-1001"));
}

/// The single checks, which throw where the reading as a whole returns a code.
class CheckTest : public TemperatureVerifierTest {};

TEST_F(CheckTest, ARfAsicIsEnabled) { EXPECT_TRUE(m_verifier.CheckDdalRfAsicReadReg(1)); }

TEST_F(CheckTest, ARfAsicIsNotEnabled) {
  fake::SetRfRegister(1, kRegister, 0);
  EXPECT_EQ(Failure([&] { m_verifier.CheckDdalRfAsicReadReg(1); }), "ddal_rf_asic_read_reg, Fail/Not Enabled, -1004");
}

TEST_F(CheckTest, ARfChainIsEnabled) { EXPECT_TRUE(m_verifier.CheckDdalRfChainStatus(2)); }

TEST_F(CheckTest, ARfChainIsNotEnabled) {
  fake::SetRfChain(2, 0);
  EXPECT_EQ(Failure([&] { m_verifier.CheckDdalRfChainStatus(2); }),
            "ddal_rf_chain_status_get, Fail/Not Enabled, -1001");
}

TEST_F(CheckTest, AReadingIsHandedOut) {
  m_verifier.GetTemperature(kDevice, &m_temperature);
  EXPECT_EQ(m_temperature, 40000);
}

TEST_F(CheckTest, AReadingFails) {
  fake::FailTemperature(kDevice, 9);
  EXPECT_EQ(Failure([&] { m_verifier.GetTemperature(kDevice, &m_temperature); }), "ddal_temp_get_curr, Fail, 9");
}

TEST_F(CheckTest, ThreeReadingsGiveTheThird) {
  Show(40000, 40001, 40002);
  EXPECT_EQ(m_verifier.GetValidTemperature(kDevice), 40002);
}

TEST_F(CheckTest, APaReadingIsTheThird) {
  Show(40000, 40001, 40002);
  EXPECT_EQ(m_verifier.GetPaSensorsValidCurrTemp(41, kDevice), 40002);
}

TEST_F(CheckTest, TheBoundsAreOutOfRange) {
  const std::string failure = "ValidTemperatureRange, Out of temperature range, -1001";
  EXPECT_EQ(Failure([&] { m_verifier.ValidTemperatureRange(-40000); }), failure);
  EXPECT_EQ(Failure([&] { m_verifier.ValidTemperatureRange(150000); }), failure);
}

TEST_F(CheckTest, InsideTheBoundsIsInRange) {
  for (const int temperature : {-39999, 0, 149999}) EXPECT_TRUE(m_verifier.ValidTemperatureRange(temperature));
}

TEST_F(CheckTest, ReadingsInOneStepAreTheSame) {
  EXPECT_TRUE(m_verifier.WhetherTemperaturesApproximatelySame(40000, 40031, 40000));
}

TEST_F(CheckTest, ReadingsInDifferentStepsAreNotTheSame) {
  EXPECT_EQ(Failure([&] { m_verifier.WhetherTemperaturesApproximatelySame(40031, 40032, 40031); }),
            "WhetherTemperaturesApproximatelySame, Temperatures are not same, -1001");
}

TEST_F(CheckTest, AnApproximationKeepsBitsFiveToFifteen) {
  EXPECT_EQ(m_verifier.ApproximatedTemp(31), 0);
  EXPECT_EQ(m_verifier.ApproximatedTemp(32), 32);
  EXPECT_EQ(m_verifier.ApproximatedTemp(65535), 65504);
  EXPECT_EQ(m_verifier.ApproximatedTemp(65536), 0);
  EXPECT_EQ(m_verifier.ApproximatedTemp(-1), 65504);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
