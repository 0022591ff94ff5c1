#include "AutodetNeighbour.h"

#include "AaSysLog.h"
#include "Msg.h"
#include "messages/Autodet.h"
#include "messages/MessageIds.h"

#include <optional>

namespace boardsim {
namespace {

/// What the climate service gets for its request; it reads none of it.
struct AutodetResp {
  u32 transactionId;
  u32 status;
};

using Request = ps::hwapi::common::Msg<SApiAutodetReq, API_AUTODET_REQ_MSG>;
using Response = ps::hwapi::common::Msg<AutodetResp, API_AUTODET_RESP_MSG>;
using UnitInd = ps::hwapi::common::Msg<SApiAutodetUnitInd, API_AUTODET_UNIT_IND_MSG>;

}  // namespace

void AutodetNeighbour::AddRoutesTo(ps::hwapi::common::Service& service) {
  static constexpr Route<AutodetNeighbour> kRoutes[] = {
      {.id = API_AUTODET_REQ_MSG, .handler = &AutodetNeighbour::HandleAutodetReq},
  };
  AddRoutes(service, this, kRoutes);
}

void AutodetNeighbour::HandleAutodetReq(void* msg) {
  if (!Online()) return;  // it was sent before the service went
  const Request request(msg);
  auto response = request.CreateReply<Response>(0);
  if (response.payload == nullptr) return;
  const SApiAutodetReq asked = request.Record();
  response->transactionId = asked.transactionId;
  response.Send();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "autodetection service: request of 0x%x accepted",
                 request.GetSender());
  Register(asked.unitIndClientAddress != 0 ? asked.unitIndClientAddress : request.GetSender(),
           asked.provideUnitInd != GLO_FALSE);
}

void AutodetNeighbour::Register(TAaSysComSicad client, bool wanted) {
  std::erase(m_clients, client);
  if (!wanted) return;
  m_clients.push_back(client);
  for (std::size_t slot = 0; slot < kUnitSlots.size(); ++slot) Tell(client, slot);
}

u32 AutodetNeighbour::TellClients(std::size_t slot) {
  std::erase_if(m_clients, [this, slot](TAaSysComSicad client) { return !Tell(client, slot); });
  return static_cast<u32>(m_clients.size());
}

bool AutodetNeighbour::Tell(TAaSysComSicad client, std::size_t slot) const {
  const std::optional<SApiAutodetUnitInd> indication = m_slots.Indication(slot);
  if (!indication) return true;
  UnitInd message(client, 0);
  if (message.payload == nullptr) return true;
  *message.payload = *indication;
  message.SetSender(AaSysComSicadGet(HWAPI_AUTODET_SERVICE, AaSysComGetOwnNid()));
  const u32 unserved = AaSysComCounterGet(EAaSysComCounter_NoReceiver);
  message.Send();
  return AaSysComCounterGet(EAaSysComCounter_NoReceiver) == unserved;
}

}  // namespace boardsim
