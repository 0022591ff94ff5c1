#include "Neighbour.h"

#include "AaConfig.h"
#include "AaSysCom.h"
#include "OnlineTag.h"
#include "messages/Status.h"

#include <string>

namespace boardsim {

void Neighbour::GoOnline(ps::hwapi::common::Service& service) {
  if (m_online) return;
  if (AaSysComUserRegister(m_task, AaProEuCurrent()) != m_task) {
    throw ps::hwapi::common::Service::InitFailedException(
        "task " + std::to_string(m_task) + " is served by another process of this board; end that one first", __FILE__,
        __LINE__);
  }
  AddRoutesTo(service);
  m_online = true;
  SetOnlineTag(m_task, EStatus_Initialized);
}

void Neighbour::GoOffline() {
  if (!m_online) return;
  m_online = false;
  Leave();
  AaSysComUserDeregister(m_task);
  SetOnlineTag(m_task, EStatus_NotInitialized);
}

}  // namespace boardsim
