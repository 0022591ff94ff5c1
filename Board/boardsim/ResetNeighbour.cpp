#include "ResetNeighbour.h"

#include "AaSysLog.h"
#include "Msg.h"
#include "messages/MessageIds.h"
#include "messages/ResetEvent.h"

namespace boardsim {
namespace {

using SubscribeReq = ps::hwapi::common::Msg<SApiResetEventNotifSubscribeReq, API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG>;
using SubscribeResp =
    ps::hwapi::common::Msg<SApiResetEventNotifSubscribeResp, API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG>;

}  // namespace

void ResetNeighbour::AddRoutesTo(ps::hwapi::common::Service& service) {
  static constexpr Route<ResetNeighbour> kRoutes[] = {
      {.id = API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG, .handler = &ResetNeighbour::HandleSubscribeReq},
  };
  AddRoutes(service, this, kRoutes);
}

void ResetNeighbour::HandleSubscribeReq(void* msg) {
  const SubscribeReq request(msg);
  auto response = request.CreateReply<SubscribeResp>(0);
  if (response.payload == nullptr) return;
  response->transactionId = request.Record().transactionId;
  response->status = EHwapiResetServiceStatus_Ok;
  response.Send();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "reset service: subscription of 0x%x accepted", request.GetSender());
}

}  // namespace boardsim
