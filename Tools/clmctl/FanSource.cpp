#include "FanSource.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "messages/MessageIds.h"

#include <utility>

namespace clmctl {

FanSource::FanSource(FanSpeedRequest request, std::chrono::milliseconds timeout)
    : m_setsFans(!request.fans.empty()), m_request(std::move(request)), m_timeout(timeout) {
  m_request.receiver = {};
  // There is no request for reports alone, and none without any fan: a fan that no unit serves is refused without any
  // effect, and the reports start nevertheless.
  if (!m_setsFans) m_request.fans.push_back({.fan = EFanUnit_GarFan4, .value = 0});
}

u32 FanSource::Endpoint() const { return HWAPI_FAN_SERVICE; }

u32 FanSource::IndicationId() const { return API_FAN_SPEED_IND_MSG; }

std::chrono::milliseconds FanSource::Interval() const {
  return m_first ? m_request.period.value_or(kFanDefaultPeriod) : kFanLaterPeriod;
}

std::string FanSource::SilenceText() const {
  return "did another request take the speed reports over? Is the daemon running?";
}

void FanSource::Begin(const Client& client) {
  const FanAnswer answer = RequestFanSpeeds(client, m_request, m_timeout);
  const bool good = answer.status == EStatus_NoError || (!m_setsFans && answer.status == EStatus_InvalidParam);
  if (!good) throw CommandError(ExitCode::Refused, RefusalText(answer));
}

void FanSource::Resume(const Client& client) {
  RequestFanSpeeds(client, m_request, m_timeout);
  m_first = true;
}

Source::Shown FanSource::Show(void* indication, View& view) {
  const std::optional<FanIndication> parsed = ParseFanIndication(indication);
  if (!parsed) return Shown::Nothing;
  m_first = false;
  return view.Show(*parsed) ? Shown::Indication : Shown::NobodyReads;
}

}  // namespace clmctl
