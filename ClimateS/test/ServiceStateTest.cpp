/// The state of the service as requests for temperatures and for fans move it together.
#include "FanSpeedTest.h"

namespace ps::hwapi::common::climate {
namespace {

class ServiceStateTest : public FanSpeedTest {
 protected:
  static constexpr u32 kPollingTemp = 4096;
  static constexpr u32 kPollingFan = 4097;
  static constexpr u32 kPollingTempAndFan = 4098;
  static constexpr u32 kKel = 6;

  void Measure(u32 command) {
    AnswerTo({.id = 0x2B29,
              .payload = Words({command, kKel, 1000, 0, 0}),
              .sender = kRequester,
              .receiver = kTemperatureEndpoint},
             0x2B2A);
    Forget();
  }
  void StartMeasurement() { Measure(0); }
  void StopMeasurement() { Measure(1); }
  void SetFans() {
    Ask(kVersion1, SpeedRequest{});
    Forget();
  }
  u32 State() const { return m_service->GetServiceStateRad(); }
};

TEST_F(ServiceStateTest, FansThenTemperaturesThenFansAlone) {
  SetFans();
  EXPECT_EQ(State(), kPollingFan);
  StartMeasurement();
  EXPECT_EQ(State(), kPollingTempAndFan);
  StopMeasurement();
  EXPECT_EQ(State(), kPollingFan);
}

TEST_F(ServiceStateTest, TemperaturesThenFans) {
  StartMeasurement();
  EXPECT_EQ(State(), kPollingTemp);
  SetFans();
  EXPECT_EQ(State(), kPollingTempAndFan);
}

TEST_F(ServiceStateTest, IsReadOnceTheCommonStateIsLeft) {
  StartMeasurement();
  StopMeasurement();
  EXPECT_TRUE(fake::UsesCommonServiceState());
  SetFans();
  EXPECT_EQ(State(), kPollingFan) << "nothing is left of a state that was left";
}

}  // namespace
}  // namespace ps::hwapi::common::climate
