#include "Attackers.h"

#include "Endpoints.h"
#include "Requests.h"
#include "messages/MessageIds.h"
#include "messages/Reset.h"

#include <sys/resource.h>
#include <random>

namespace soak {
namespace {

/// The daemon is what shall be busy, not the processor.
constexpr int kNice = 19;
constexpr double kPauseWhenFull = 0.001;
/// Ids from here on are nobody's.
constexpr u32 kFirstUnknownId = 0x7000;

void SendStore(unsigned number, unsigned /*random*/) {
  if (number % 2 == 0) {
    SendStoreFile(number);
  } else {
    SendStoreData(number);
  }
}

void SendFans(unsigned number, unsigned /*random*/) { SendLargeFrequency(number); }

void SendNobodys(unsigned /*number*/, unsigned random) { SendUnknown(kFirstUnknownId + random % 0x1000); }

void SendStops(unsigned /*number*/, unsigned /*random*/) { SendStop(); }

void SendMixed(unsigned number, unsigned random) {
  constexpr unsigned kKinds = 8;
  switch (random % kKinds) {
    case 0:
      return SendFrequency(number);
    case 1:
      return SendLargeFrequency(number);
    case 2:
      return SendStore(number, random / kKinds);
    case 3:
      return SendNobodys(number, random / kKinds);
    case 4:
      return SendTo(HWAPI_BLACKBOX, API_GET_BLACKBOX_RESET_INFO_REQ_MSG, SApiGetBlackboxResetInfoReq{});
    case 5:
      return SendBytes(HWAPI_TEMPERATURE_SERVICE, API_TEMP_MEAS_REQ_MSG, &random, random / kKinds % sizeof random);
    default:
      return SendStop();
  }
}

/// Answers are read, so that the room for them is not what stops the daemon.
void TakeAnswers() {
  while (Receive(0)) {
  }
}

void Send(const Flood& flood, unsigned seed, const std::atomic<bool>& stop, std::atomic<unsigned long>& sent) {
  if (setpriority(PRIO_PROCESS, 0, kNice) != 0) bench::Die("nice");
  const Task task;
  std::mt19937 random(seed);
  u32 lost = 0;
  for (unsigned number = 0; !stop; ++number) {
    flood.send(number, static_cast<unsigned>(random()));
    ++sent;
    TakeAnswers();
    const u32 lostNow = AaSysComCounterGet(EAaSysComCounter_QueueFull);
    if (lostNow != lost && !flood.insists) Sleep(kPauseWhenFull);
    lost = lostNow;
  }
}

}  // namespace

constexpr Flood kAllFloods[] = {
    {.name = "mixed", .send = &SendMixed, .insists = false},
    {.name = "store", .send = &SendStore, .insists = false},
    {.name = "43 kB", .send = &SendFans, .insists = false},
    {.name = "unknown ids", .send = &SendNobodys, .insists = false},
    {.name = "open loop", .send = &SendStops, .insists = true},
};
const std::span<const Flood> kFloods = kAllFloods;

Attackers::Attackers(const Flood& flood, unsigned count, unsigned seed) {
  for (unsigned i = 0; i < count; ++i) {
    m_processes.emplace_back([&, i] { Send(flood, seed + i, m_shared->stop, m_shared->sent); });
  }
}

unsigned Attackers::Stop() {
  m_shared->stop = true;
  unsigned failed = 0;
  for (Child& process : m_processes) failed += process.EndsWell() ? 0U : 1U;
  return failed;
}

}  // namespace soak
