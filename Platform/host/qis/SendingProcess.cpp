#include "SendingProcess.h"

#include "Channel.h"

namespace hwapi::qis {

void SendingProcess::AddReady(Channel& channel) {
  if (channel.isReady) {
    return;
  }
  channel.isReady = true;
  channel.nextReady = nullptr;
  if (m_last != nullptr) {
    m_last->nextReady = &channel;
  } else {
    m_first = &channel;
  }
  m_last = &channel;
}

Channel* SendingProcess::TakeReady() {
  Channel* const first = m_first;
  if (first != nullptr) {
    RemoveReady(*first);
  }
  return first;
}

void SendingProcess::RemoveReady(Channel& channel) {
  if (!channel.isReady) {
    return;
  }
  Channel* before = nullptr;
  for (Channel* passed = m_first; passed != &channel; passed = passed->nextReady) {
    before = passed;
  }
  if (before != nullptr) {
    before->nextReady = channel.nextReady;
  } else {
    m_first = channel.nextReady;
  }
  if (m_last == &channel) {
    m_last = before;
  }
  channel.isReady = false;
}

}  // namespace hwapi::qis
