#include "Honest.h"

#include "AaConfig.h"
#include "Endpoints.h"
#include "Requests.h"
#include "messages/BlackBox.h"
#include "messages/FanControl.h"
#include "messages/MessageIds.h"
#include "messages/ResetProofRam.h"
#include "messages/Status.h"
#include "messages/TempMeas.h"

#include <unistd.h>
#include <algorithm>
#include <string>
#include <vector>

namespace soak {
namespace {

constexpr double kReportPeriod = 1;

void Ask(HonestRecord& record, bool (*isAnswered)(), double period) {
  const Task task;
  double due = Now();
  double since = due;  // a request that is late because of the one before counts from when it was due
  while (!record.stop) {
    ++record.asked;
    if (!isAnswered()) return;
    const unsigned answered = record.answered;
    const double answeredAt = Now();
    if (answered > 0 && answered <= HonestRecord::kRoom) {
      record.seconds[answered - 1] = static_cast<float>(answeredAt - since);
    }
    record.answered = answered + 1;
    due += period;
    if (due > answeredAt) {
      Sleep(due - answeredAt);
      since = Now();
    } else {
      since = due;
    }
  }
}

void Listen(Arrivals& indications, Arrivals& fanReports) {
  const Task task;
  SendStart();
  SendSpeed();
  for (;;) {
    const Message message = Receive(kDeadline);
    if (!message) continue;
    if (AaSysComMsgGetId(message.get()) == API_TEMP_MEAS_IND_MSG) indications.Add(Now());
    if (AaSysComMsgGetId(message.get()) == API_FAN_SPEED_IND_MSG) fanReports.Add(Now());
  }
}

/// The black box is taken into use when it knows its files.
void SetFilesOfBlackBox() {
  for (const std::string name : {"", ".config", ".temperature", ".alarms", ".oam.alarms", ".sfp", ".oam.sfp"}) {
    const std::string path = "/ffs/run/config/lifedata/blackbox" + name;
    AaConfigTagPublicSet(("app.hwapi.blackbox" + name + ".file").c_str(), path.data(), static_cast<u32>(path.size()));
  }
}

void ServeDaemon(std::atomic<bool>& ready) {
  const TAaProEuId eu = AaProEuCurrent();
  if (AaSysComUserRegister(HWAPI_RESET_SERVICE, eu) == 0 || AaSysComUserRegister(HWAPI_SWDL_SERVICE, eu) == 0) {
    bench::Die("neighbours");
  }
  SetFilesOfBlackBox();
  const u32 online = EStatus_Initialized;
  AaConfigTagPublicSet("app.hwapi.online.4a7", &online, sizeof online);
  ready = true;
  for (;;) {
    const Message message = Receive(kDeadline);
    if (!message || AaSysComMsgGetId(message.get()) != API_OM_GET_RP_RAM_REQ_MSG) continue;
    void* reply = AaSysComMsgCreateReply(API_OM_GET_RP_RAM_RESP_MSG, sizeof(SApiOmGetRPRamResp), message.get());
    static_cast<SApiOmGetRPRamResp*>(AaSysComMsgGetPayload(reply))->status = ERP_RAM_status_Success;
    AaSysComMsgSend(&reply);
  }
}

EStatus StatusOf(const SApiBlackboxStoreFileResp& response) { return response.status; }
EStatus StatusOf(const SApiSetFanPwmFreqResp& response) { return response.response.status; }

/// @return seconds until the answer came, which has to say that it was done
template <typename Response>
double TimeOf(void (*send)(u32), u32 id) {
  const double start = Now();
  send(1);
  const auto response = PayloadOf<Response>(Receive(kDeadline), id);
  const double seconds = Now() - start;
  if (!response || StatusOf(*response) != EStatus_NoError) _exit(1);
  return seconds;
}

/// The answer of a stored black box goes to a neighbour: what is asked next is answered after it.
void SendStoreDataAndFile(u32 transaction) {
  SendStoreData(transaction);
  SendStoreFile(transaction);
}

}  // namespace

bool StopIsAnswered() {
  SendStop();
  return PayloadOf<SApiTempMeasResp>(Receive(kDeadline), API_TEMP_MEAS_RESP_MSG).has_value();
}

HonestClient::HonestClient(bool (*ask)(), double period)
    : m_process([this, ask, period] { Ask(*m_record, ask, period); }) {}

unsigned HonestClient::Finish() {
  m_record->stop = true;
  const bool well = m_process.EndsWell(2 * kDeadline);
  return m_record->asked - m_record->answered + (well ? 0 : 1);
}

/// @param butShare share of the times, the longest ones, that does not count
double HonestClient::LongestMs(double butShare) const {
  const unsigned answered = m_record->answered;
  if (answered < 2) return kDeadline * 1000;
  const std::size_t count = std::min(answered - 1, HonestRecord::kRoom);
  std::vector<float> sorted(m_record->seconds.begin(), m_record->seconds.begin() + static_cast<std::ptrdiff_t>(count));
  std::ranges::sort(sorted);
  return sorted[count - 1 - static_cast<std::size_t>(static_cast<double>(count) * butShare)] * 1000.0;
}

void Arrivals::Add(double now) {
  const unsigned index = count;
  if (index < kRoom) at[index] = now;
  count = index + 1;
}

double Arrivals::MaxLateness(double since) const {
  double lateness = 0;
  const unsigned known = std::min(count.load(), kRoom);
  for (unsigned i = 0; i < known; ++i) {
    if (at[i] >= since) lateness = std::max(lateness, at[i] - at[0] - i * kReportPeriod);
  }
  return lateness;
}

Listener::Listener() : m_process([this] { Listen(m_record->indications, m_record->fanReports); }) {}

Neighbours::Neighbours() : m_process([this] { ServeDaemon(*m_ready); }) {
  if (!Eventually([this] { return m_ready->load(); })) bench::Die("neighbours");
}

std::optional<double> LongestHandlerMs() {
  const Shared<double> longest;
  Child client([&longest] {
    constexpr int kRuns = 20;
    const Task task;
    for (int i = 0; i < kRuns; ++i) {
      for (const double seconds :
           {TimeOf<SApiBlackboxStoreFileResp>(&SendStoreFile, API_BLACKBOX_STORE_FILE_RESP_MSG),
            TimeOf<SApiBlackboxStoreFileResp>(&SendStoreDataAndFile, API_BLACKBOX_STORE_FILE_RESP_MSG),
            TimeOf<SApiSetFanPwmFreqResp>(&SendLargeFrequency, API_SET_FAN_PWM_FREQ_RESP_MSG)}) {
        *longest = std::max(*longest, seconds * 1000);
      }
    }
  });
  if (!client.EndsWell(10 * kDeadline)) return std::nullopt;
  return *longest;
}

bool NewClientIsAnswered() {
  return Child([] {
           const Task task;
           if (!StopIsAnswered()) _exit(1);
         })
      .EndsWell(2 * kDeadline);
}

}  // namespace soak
