#include "SimulatedHardware.h"

#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace boardsim {
namespace {

constexpr u32 kSensor = 0x10000;
/// Steps until everything has settled: ten seconds of time constants of at most one.
constexpr unsigned kSettled = 50;

/// A board of one sensor, which nothing but the fans moves, and two fans; the drivers show what is simulated.
class SimulatedHardwareTest : public testing::Test {
 protected:
  SimulatedHardwareTest() {
    char name[] = "/tmp/boardsim-test-XXXXXX";
    m_folder = mkdtemp(name);
    std::ofstream(m_folder / "board.toml")
        << "[unit]\ntype = \"Kel\"\nversion = \"Kela\"\n"
           "[[temperature]]\ndevice = 0x10000\nsim = { base = 50.0, load = 0.0, cooling = 20.0, noise = 0.0, "
           "inertia = 1 }\n"
           "[[fan]]\nid = 0\nsim = { max_rpm = 6000, inertia = 1 }\n"
           "[[fan]]\nid = 1\nsim = { max_rpm = 4000, inertia = 1 }\n";
    setenv("HWAPI_RUN", (m_folder / "run").c_str(), 1);
    setenv("HWAPI_BOARD", (m_folder / "board.toml").c_str(), 1);
    std::filesystem::create_directory(m_folder / "run");
    m_hardware.emplace(hwapi::board::OwnBoard());
    EXPECT_EQ(m_hardware->Start(), 0);
  }
  ~SimulatedHardwareTest() override {
    m_hardware.reset();
    std::filesystem::remove_all(m_folder);
  }

  static void SetSpeeds(u32 first, u32 second) {
    EXPECT_EQ(ddal_fan_set_pwm(0, first), 0);
    EXPECT_EQ(ddal_fan_set_pwm(1, second), 0);
  }
  double CelsiusWhenSettled() {
    m_hardware->Advance(kSettled);
    int thousandths = 0;
    EXPECT_EQ(ddal_temp_get_curr(kSensor, &thousandths), 0);
    return thousandths / 1000.0;
  }
  static int Rpm(u32 fan) {
    int rpm = -1;
    EXPECT_EQ(ddal_fan_get_rpm(fan, &rpm), 0);
    return rpm;
  }

  std::filesystem::path m_folder;
  std::optional<SimulatedHardware> m_hardware;
};

TEST_F(SimulatedHardwareTest, SettlesAtTheSpeedThatIsAsked) {
  SetSpeeds(100, 25);
  m_hardware->Advance(kSettled);
  EXPECT_NEAR(Rpm(0), 6000, 1);
  EXPECT_NEAR(Rpm(1), 1000, 1);
}

TEST_F(SimulatedHardwareTest, SettlesAlsoInLongSteps) {
  SetSpeeds(100, 25);
  m_hardware->Advance(250, 16'000);
  EXPECT_NEAR(Rpm(0), 6000, 1);
}

TEST_F(SimulatedHardwareTest, IsCoolerTheFasterItsFansTurn) {
  SetSpeeds(0, 0);
  EXPECT_NEAR(CelsiusWhenSettled(), 50, 0.1);
  SetSpeeds(50, 50);
  EXPECT_NEAR(CelsiusWhenSettled(), 40, 0.1);
  SetSpeeds(100, 100);
  EXPECT_NEAR(CelsiusWhenSettled(), 30, 0.1);
}

TEST_F(SimulatedHardwareTest, IsCooledLessByAStuckFan) {
  SetSpeeds(100, 100);
  EXPECT_EQ(m_hardware->SetFan(0, FanChange::Stick, 0), 0);
  EXPECT_NEAR(CelsiusWhenSettled(), 40, 0.1);
  EXPECT_EQ(Rpm(0), 0);
}

TEST_F(SimulatedHardwareTest, LetsAStuckFanFollowAgain) {
  SetSpeeds(100, 100);
  m_hardware->SetFan(0, FanChange::Stick, 0);
  m_hardware->Advance(kSettled);
  EXPECT_EQ(m_hardware->SetFan(0, FanChange::Auto, 0), 0);
  EXPECT_NEAR(CelsiusWhenSettled(), 30, 0.1);
}

TEST_F(SimulatedHardwareTest, FailsReadsAndWritesApart) {
  int rpm = 0;
  EXPECT_EQ(m_hardware->SetFan(0, FanChange::FailRead, DDAL_ERR_IO), 0);
  EXPECT_EQ(ddal_fan_get_rpm(0, &rpm), DDAL_ERR_IO);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), 0);
  EXPECT_EQ(m_hardware->SetFan(0, FanChange::FailWrite, DDAL_ERR_INVALID), 0);
  EXPECT_EQ(ddal_fan_get_rpm(0, &rpm), DDAL_ERR_IO);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_INVALID);
}

TEST_F(SimulatedHardwareTest, EndsAllFailuresOfAFanAtOnce) {
  m_hardware->SetFan(0, FanChange::Fail, DDAL_ERR_IO);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  EXPECT_EQ(m_hardware->SetFan(0, FanChange::Auto, 0), 0);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), 0);
  EXPECT_GE(Rpm(0), 0);
}

TEST_F(SimulatedHardwareTest, TellsWhatIsTheMatterWithEachFan) {
  m_hardware->SetFan(0, FanChange::Stick, 700);
  m_hardware->SetFan(1, FanChange::Fail, DDAL_ERR_IO);
  const auto fans = m_hardware->Fans();
  ASSERT_EQ(fans.size(), 2u);
  EXPECT_EQ(fans[0].stuck, 1u);
  EXPECT_EQ(fans[0].readFailure, 0);
  EXPECT_EQ(fans[1].stuck, 0u);
  EXPECT_EQ(fans[1].readFailure, DDAL_ERR_IO);
  EXPECT_EQ(fans[1].writeFailure, DDAL_ERR_IO);
}

TEST_F(SimulatedHardwareTest, RemovedSensorIsNoDevice) {
  int thousandths = 0;
  m_hardware->RemoveSensor(kSensor);
  m_hardware->Advance(1);
  EXPECT_EQ(ddal_temp_get_curr(kSensor, &thousandths), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(m_hardware->Sensors().at(0).mode, SensorMode::Absent);
}

TEST_F(SimulatedHardwareTest, RemovedSensorCannotBeChanged) {
  m_hardware->RemoveSensor(kSensor);
  EXPECT_EQ(m_hardware->SetSensor(kSensor, SensorMode::Pinned, 1000), DDAL_ERR_NO_DEVICE);
  int thousandths = 0;
  EXPECT_EQ(ddal_temp_get_curr(kSensor, &thousandths), DDAL_ERR_NO_DEVICE);
}

TEST_F(SimulatedHardwareTest, InsertedSensorFollowsThePhysicsWhateverItDidBefore) {
  SetSpeeds(0, 0);
  for (const SensorMode mode : {SensorMode::Failing, SensorMode::Pinned}) {
    ASSERT_EQ(m_hardware->SetSensor(kSensor, mode, -2), 0);
    m_hardware->RemoveSensor(kSensor);
    m_hardware->InsertSensor(kSensor);
    EXPECT_NEAR(CelsiusWhenSettled(), 50, 0.1);
  }
}

TEST_F(SimulatedHardwareTest, SensorIsNotMadeAbsentByARequest) {
  EXPECT_EQ(m_hardware->SetSensor(kSensor, SensorMode::Absent, 0), DDAL_ERR_INVALID);
  EXPECT_EQ(m_hardware->Sensors().at(0).mode, SensorMode::Auto);
}

TEST_F(SimulatedHardwareTest, HasNoFanThatTheBoardHasNot) {
  EXPECT_EQ(m_hardware->SetFan(2, FanChange::Stick, 0), DDAL_ERR_NO_DEVICE);
}

}  // namespace
}  // namespace boardsim
