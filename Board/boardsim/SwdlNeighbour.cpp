#include "SwdlNeighbour.h"

#include "AaSysLog.h"
#include "Msg.h"
#include "messages/BlackBox.h"
#include "messages/MessageIds.h"

namespace boardsim {

void SwdlNeighbour::AddRoutesTo(ps::hwapi::common::Service& service) {
  static constexpr Route<SwdlNeighbour> kRoutes[] = {
      {.id = API_STORE_BLACKBOX_DATA_RESP_MSG, .handler = &SwdlNeighbour::HandleStoreBlackboxDataResp},
  };
  AddRoutes(service, this, kRoutes);
}

void SwdlNeighbour::HandleStoreBlackboxDataResp(void* msg) {
  const ps::hwapi::common::Msg<SApiStoreBlackboxDataResp, API_STORE_BLACKBOX_DATA_RESP_MSG> response(msg);
  const SApiStoreBlackboxDataResp told = response.Record();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0,
                 "software-download service: black-box data of transaction %u is stored, status %u, says 0x%x",
                 told.transactionId, static_cast<u32>(told.status), response.GetSender());
}

}  // namespace boardsim
