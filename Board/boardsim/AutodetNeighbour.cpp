#include "AutodetNeighbour.h"

#include "AaSysLog.h"
#include "Msg.h"
#include "messages/Autodet.h"
#include "messages/MessageIds.h"

namespace boardsim {
namespace {

/// What the climate service gets for its request; it reads none of it.
struct AutodetResp {
  u32 transactionId;
  u32 status;
};

using Request = ps::hwapi::common::Msg<SApiAutodetReq, API_AUTODET_REQ_MSG>;
using Response = ps::hwapi::common::Msg<AutodetResp, API_AUTODET_RESP_MSG>;

}  // namespace

void AutodetNeighbour::AddRoutesTo(ps::hwapi::common::Service& service) {
  static constexpr Route<AutodetNeighbour> kRoutes[] = {
      {.id = API_AUTODET_REQ_MSG, .handler = &AutodetNeighbour::HandleAutodetReq},
  };
  AddRoutes(service, this, kRoutes);
}

void AutodetNeighbour::HandleAutodetReq(void* msg) {
  const Request request(msg);
  auto response = request.CreateReply<Response>(0);
  if (response.payload == nullptr) return;
  response->transactionId = request.Record().transactionId;
  response.Send();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "autodetection service: request of 0x%x accepted",
                 request.GetSender());
}

}  // namespace boardsim
