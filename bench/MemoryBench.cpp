#include "AaSysCom.h"
#include "Benches.h"
#include "Endpoints.h"
#include "Process.h"
#include "messages/MessageIds.h"
#include "messages/TempMeas.h"

#include <fstream>
#include <sstream>
#include <string>

namespace bench {
namespace {

constexpr int kWarmUpIndications = 1000;
constexpr int kIndications = 100000;

MemoryUse ReadMemory(pid_t pid) {
  std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
  MemoryUse use{};
  for (std::string line; std::getline(rollup, line);) {
    std::istringstream words(line);
    std::string name;
    double kib = 0;
    words >> name >> kib;
    if (name == "Rss:") use.residentKib = kib;
    if (name == "Anonymous:") use.anonymousKib = kib;
  }
  return use;
}

/// Lets the daemon read all sensors of the control board and report them, as its own timer does.
void Indicate(int times) {
  const TAaSysComNid node = AaSysComGetOwnNid();
  for (int i = 0; i < times; ++i) {
    void* tick = AaSysComMsgCreate(API_TEMPERATURE_POLL_TIMER_IND_MSG, sizeof(SApiTemperaturePollTimerInd),
                                   AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, node));
    static_cast<SApiTemperaturePollTimerInd*>(AaSysComMsgGetPayload(tick))->sensorType = ETempSensorType_Kel;
    AaSysComMsgSend(&tick);
    void* indication = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    AaSysComMsgDestroy(&indication);
  }
}

}  // namespace

MemoryFigures MeasureMemory(const BenchBoard& board) {
  const Daemon daemon({CLM_PROGRAM}, board.Environment());
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  Indicate(kWarmUpIndications);
  MemoryFigures figures{};
  figures.before = ReadMemory(daemon.Pid());
  Indicate(kIndications);
  figures.after = ReadMemory(daemon.Pid());
  AaSysComUserDeregister(task);
  return figures;
}

}  // namespace bench
