#include "MessageList.h"

#include "MessagePool.h"

#include <algorithm>

namespace hwapi::qis {

bool Passes(const Message& message, const u16* filter) {
  return filter == nullptr || std::find(filter + 1, filter + 1 + *filter, message.header.id) != filter + 1 + *filter;
}

MessageList::~MessageList() {
  while (Take(nullptr)) {
  }
}

Message* MessageList::Next(const Message* message) {
  return static_cast<Message*>(LinkOf(const_cast<Message*>(message)));
}

void MessageList::Append(MessagePtr message) {
  Message* const appended = message.release();
  LinkOf(appended) = nullptr;
  if (m_last != nullptr) {
    LinkOf(m_last) = appended;
  } else {
    m_first = appended;
  }
  m_last = appended;
}

MessagePtr MessageList::Take(const u16* filter) {
  Message* before = nullptr;
  Message* found = m_first;
  while (found != nullptr && !Passes(*found, filter)) {
    before = found;
    found = Next(found);
  }
  if (found == nullptr) {
    return nullptr;
  }
  if (before != nullptr) {
    LinkOf(before) = Next(found);
  } else {
    m_first = Next(found);
  }
  if (m_last == found) {
    m_last = before;
  }
  return MessagePtr(found);
}

}  // namespace hwapi::qis
