#include "Neighbour.h"

#include "AaConfig.h"
#include "AaSysCom.h"
#include "OnlineTag.h"
#include "messages/Status.h"

#include <string>

namespace boardsim {

void Neighbour::GoOnline(ps::hwapi::common::Service& service) {
  if (AaSysComUserRegister(m_task, AaProEuCurrent()) != m_task) {
    throw ps::hwapi::common::Service::InitFailedException(
        "task " + std::to_string(m_task) + " is served by another process of this board; end that one first", __FILE__,
        __LINE__);
  }
  AddRoutesTo(service);
  SetOnlineTag(m_task, EStatus_Initialized);
}

void Neighbour::GoOffline() {
  AaSysComUserDeregister(m_task);
  SetOnlineTag(m_task, EStatus_NotInitialized);
}

}  // namespace boardsim
