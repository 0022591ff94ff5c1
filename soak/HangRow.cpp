/// A chip that does not answer, and what those notice who do not ask for it.
#include "Fd.h"
#include "Honest.h"
#include "HungMark.h"
#include "Requests.h"
#include "Rows.h"
#include "Scene.h"
#include "messages/FanControl.h"
#include "messages/MessageIds.h"
#include "messages/TempMeas.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace soak {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kRounds = 9;
constexpr double kMaxP99Ratio = 2;
/// Time that the first access to a chip that hangs may take: its deadline, of which the machine takes a part.
constexpr double kMaxFirstWaitMs = 200;
/// Of who asks for nothing that hangs, in seconds.
constexpr double kAskPeriod = 0.002;
/// Of who asks for the fan whose chip may hang, in seconds.
constexpr double kFanPeriod = 0.01;

/// A chip that does not answer while this lives.
class HungChip {
 public:
  explicit HungChip(const fs::path& folder) {
    for (const auto& file : fs::directory_iterator(folder)) {
      const hwapi::qis::Fd& attribute = m_attributes.emplace_back(open(file.path().c_str(), O_RDONLY | O_CLOEXEC));
      if (flock(attribute.Get(), LOCK_EX) != 0 || fchmod(attribute.Get(), kMode | kHungMark) != 0) bench::Die("chip");
    }
  }
  HungChip(const HungChip&) = delete;
  HungChip& operator=(const HungChip&) = delete;
  /// Closing the files gives their locks back.
  ~HungChip() {
    for (const hwapi::qis::Fd& attribute : m_attributes) fchmod(attribute.Get(), kMode);
  }

 private:
  static constexpr mode_t kMode = 0644;

  std::vector<hwapi::qis::Fd> m_attributes;
};

/// What a client sees of a chip.
struct Readings {
  std::atomic<unsigned> good{0};
  std::atomic<unsigned> failed{0};
  void Add(bool isGood) { ++(isGood ? good : failed); }
};
struct ChipsSeen {
  Readings sensor;
  Readings fan;
};

/// @return whether every sensor of an indication has a value
bool AllSensorsAnswer(const Message& indication) {
  SApiTempMeasInd head{};
  const auto* const payload = static_cast<const u8*>(AaSysComMsgGetPayload(indication.get()));
  std::memcpy(&head, payload, offsetof(SApiTempMeasInd, tempMeasurementInfo));
  for (u32 i = 0; i < head.numberOfSensors; ++i) {
    STempMeasInfo sensor{};
    std::memcpy(&sensor, payload + offsetof(SApiTempMeasInd, tempMeasurementInfo) + i * sizeof sensor, sizeof sensor);
    if (sensor.temp_sensor_state == 0) return false;
  }
  return true;
}

/// A client with a measurement of all sensors and the reports of all fans, which sets the fan again and again.
void UseChips(ChipsSeen& seen) {
  const Task task;
  SendStart();
  SendSpeed();
  for (double due = Now();;) {
    if (Now() >= due) {
      SendFrequency(1, EFanUnit_GarFan2);
      due = Now() + kFanPeriod;
    }
    const Message message = Receive(kFanPeriod);
    if (!message) continue;
    if (AaSysComMsgGetId(message.get()) == API_TEMP_MEAS_IND_MSG) seen.sensor.Add(AllSensorsAnswer(message));
    const auto fan = PayloadOf<SApiSetFanPwmFreqResp>(message, API_SET_FAN_PWM_FREQ_RESP_MSG);
    if (fan) seen.fan.Add(fan->response.status == EStatus_NoError);
  }
}

/// What those ask for in turn who need no chip that hangs: a measurement, and the fan of another chip.
bool OthersAreAnswered() {
  static u32 transaction = 0;
  if (++transaction % 2 == 0) return StopIsAnswered();
  SendFrequency(transaction);
  const auto answer = PayloadOf<SApiSetFanPwmFreqResp>(Receive(kDeadline), API_SET_FAN_PWM_FREQ_RESP_MSG);
  return answer && answer->transactionId == transaction && answer->response.status == EStatus_NoError;
}

/// What may hang, and what was seen while it did.
struct Attack {
  const char* name;
  fs::path chip;
  const Readings& readings;
  std::vector<double> p99Ms{};
};

/// @return p99 of those who ask for other things, for a while
double MeasureP99Ms(const std::string& where, double seconds, Report& report) {
  HonestClient honest(&OthersAreAnswered, kAskPeriod);
  Sleep(seconds);
  report.Hard("requests lost, " + where, honest.Finish(), "", 0);
  return honest.P99Ms();
}

/// One turn of an attack: the chip begins to hang, hangs, and answers again.
void HangFor(double seconds, Attack& attack, Report& report) {
  const std::string where = std::string(attack.name) + " hangs";
  {
    HonestClient witness(&OthersAreAnswered, kAskPeriod);
    Eventually([&] { return witness.Answered() > 1; });
    const unsigned failed = attack.readings.failed;
    const HungChip hung(attack.chip);
    const bool isNoticed = Eventually([&] { return attack.readings.failed > failed; });
    report.Hard("nobody notices that " + where, isNoticed ? 0 : 1, "", 0);
    report.Hard("requests lost, " + where, witness.Finish(), "", 0);
    report.Timed("longest wait when " + std::string(attack.name) + " begins to hang", witness.MaxMs(), "ms",
                 kMaxFirstWaitMs);
    attack.p99Ms.push_back(MeasureP99Ms(where, seconds, report));
  }
  const unsigned good = attack.readings.good;
  report.Hard("readings that do not come again after " + where,
              Eventually([&] { return attack.readings.good > good; }) ? 0 : 1, "", 0);
}

}  // namespace

void AttackByHangingChips(const Settings& settings, Report& report) {
  const bench::BenchBoard board({.fans = true, .clockSpeed = kClockSpeed, .chips = true});
  Scene scene(board, settings, {.library = HANGING_CHIP_LIBRARY});
  const Shared<ChipsSeen> seen;
  const Child user([&seen] { UseChips(*seen); });
  std::array<Attack, 2> attacks = {
      Attack{.name = "a sensor's chip", .chip = board.SensorChip(), .readings = seen->sensor},
      Attack{.name = "a fan's chip", .chip = board.FanChip(), .readings = seen->fan},
  };
  Eventually([&] { return seen->sensor.good > 0 && seen->fan.good > 0; });
  scene.StartWatching();

  const unsigned rounds = settings.IsShort() ? 1 : kRounds;
  std::vector<double> idleMs;
  for (unsigned round = 0; round < rounds; ++round) {
    const unsigned failed = seen->sensor.failed + seen->fan.failed;
    idleMs.push_back(MeasureP99Ms("nothing hangs", settings.seconds / rounds, report));
    report.Hard("readings that fail, nothing hangs", seen->sensor.failed + seen->fan.failed - failed, "", 0);
    std::string progress = "p99 in ms: idle " + std::to_string(idleMs.back());
    for (Attack& attack : attacks) {
      HangFor(settings.seconds / rounds, attack, report);
      progress += std::string(", ") + attack.name + " hangs " + std::to_string(attack.p99Ms.back());
    }
    report.Progress(progress);
  }
  for (const Attack& attack : attacks) {
    report.Timed("p99, " + std::string(attack.name) + " hangs / idle", Median(attack.p99Ms) / Median(idleMs), "",
                 kMaxP99Ratio);
  }
  scene.ReportWatched(report, "");
}

}  // namespace soak
