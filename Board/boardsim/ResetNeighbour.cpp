#include "ResetNeighbour.h"

#include "AaSysLog.h"
#include "AaSysTime.h"
#include "Msg.h"
#include "ResetAnswer.h"
#include "messages/MessageIds.h"
#include "messages/ResetEvent.h"
#include "messages/ResetProofRam.h"

namespace boardsim {
namespace {

using SubscribeReq = ps::hwapi::common::Msg<SApiResetEventNotifSubscribeReq, API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG>;
using SubscribeResp =
    ps::hwapi::common::Msg<SApiResetEventNotifSubscribeResp, API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG>;
using GetRpRamReq = ps::hwapi::common::Msg<SApiOmGetRPRamReq, API_OM_GET_RP_RAM_REQ_MSG>;
using GetRpRamResp = ps::hwapi::common::Msg<SApiOmGetRPRamResp, API_OM_GET_RP_RAM_RESP_MSG>;

/// Sends a message after a while, board time.
void SendLate(GetRpRamResp& response, u32 seconds) {
  TAaSysTimerId timer = 0;
  if (AaSysTimermCreate(&timer, seconds * 1'000'000, 0, response.msg) != 0) AaSysComMsgDestroy(&response.msg);
}

}  // namespace

void ResetNeighbour::AddRoutesTo(ps::hwapi::common::Service& service) {
  static constexpr Route<ResetNeighbour> kRoutes[] = {
      {.id = API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG, .handler = &ResetNeighbour::HandleSubscribeReq},
      {.id = API_OM_GET_RP_RAM_REQ_MSG, .handler = &ResetNeighbour::HandleGetRpRamReq},
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

void ResetNeighbour::HandleGetRpRamReq(void* msg) {
  const GetRpRamReq request(msg);
  const ResetAnswer answer = ResetAnswer::Current(m_answerFile);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "reset service: 0x%x asks for the last reset, the answer is \"%s\"",
                 request.GetSender(), answer.Line().c_str());
  auto response = answer.silent ? GetRpRamResp(nullptr) : request.CreateReply<GetRpRamResp>(0);
  if (response.payload == nullptr) return;
  response->field = request.Record().field;
  const bool known = response->field == ERP_RAM_field_ResetType;
  response->status = known ? answer.status : ERP_RAM_status_invalid_field;
  response->value = known ? answer.type : 0;
  if (answer.delaySeconds != 0) {
    SendLate(response, answer.delaySeconds);
  } else {
    response.Send();
  }
}

}  // namespace boardsim
