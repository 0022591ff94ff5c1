#include "PsuSpiPoller.h"

#include "AaSysCom.h"
#include "AaSysTime.h"
#include "DdalText.h"
#include "Log.h"
#include "ddal_temp.h"

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kIntervalMs = 900;
constexpr const char* kThreadName = "PsuSpiPoller";
constexpr u32 kStackSize = 1024;
constexpr u32 kPriority = 5;
constexpr u32 kArgumentSize = 4;
constexpr u32 kPsuChannel = 0x70041;

}  // namespace

PsuSpiPoller::PsuSpiPoller() { CLM_LOG(Debug, "PsuSpiPoller::PsuSpiPoller"); }

PsuSpiPoller::~PsuSpiPoller() { CLM_LOG(Debug, "PsuSpiPoller::~PsuSpiPoller"); }

bool PsuSpiPoller::enableSpiEvents() {
  if (m_PsuSpiPollerEnabled != GLO_FALSE) {
    CLM_LOG(Warning, "PsuSpiPoller::enableSpiEvents(): thread for PSU SPI poller already started\n");
    return true;
  }
  CLM_LOG(Debug, "PsuSpiPoller::enableSpiEvents(): starting thread for PSU SPI poller");
  TAaProEuId euId = 0;
  const PsuSpiPoller* const self = this;
  const i32 ret =
      AaSysComEuCreateAndStart(&euId, kThreadName, feedSpiStateMachine, kStackSize, kPriority, &self, kArgumentSize);
  if (ret != 0) {
    CLM_LOG(Error, "PsuSpiPoller::enableSpiEvents(): failed to start thread for PSU SPI poller, ret = %d\n", ret);
    return false;
  }
  CLM_LOG(Info, "PsuSpiPoller::enableSpiEvents(): thread for PSU SPI poller started. Interval is %d milliseconds.\n",
          kIntervalMs);
  m_PsuSpiPollerEnabled = GLO_TRUE;
  return true;
}

void* feedSpiStateMachine(void* /*argument*/) {
  for (;;) {
    AaSysTimeSleep(kIntervalMs, EAaSysTimeScale_Millisec);
    int discarded = 0;
    const int code = ddal_temp_get_curr(kPsuChannel, &discarded);
    if (code != 0) {
      CLM_LOG(Warning, "Failed to feed PSU SPI state machine. DDAL ecode %i, %s", code, DdalText(code).c_str());
    }
  }
}

}  // namespace ps::hwapi::common::climate
