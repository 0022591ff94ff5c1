#include "TagWaits.h"

#include "AaConfig.h"
#include "AaProWatch.h"
#include "HwapiException.h"

#include <cstring>

using ps::hwapi::common::MsgHandlingException;

namespace hwapi::nub {

TagWaits& TagWaits::Own() {
  static TagWaits* const own = new TagWaits;
  return *own;
}

void TagWaits::WaitFor(const std::string& name, u32 value) {
  Register(name);
  std::unique_lock lock(m_lock);
  const auto decided = [&] {
    const auto tag = m_values.find(name);
    return m_interrupted || tag == m_values.end() || tag->second == value;
  };
  AaProRestBegin();
  m_changed.wait(lock, decided);
  AaProRestEnd();
  if (m_interrupted) {
    throw MsgHandlingException("Service is being stopped while it waits for tag " + name, __FILE__, __LINE__);
  }
  if (!m_values.contains(name)) {
    throw MsgHandlingException("Tag " + name + " cannot be observed", __FILE__, __LINE__);
  }
}

void TagWaits::Interrupt() {
  const std::lock_guard lock(m_lock);
  m_interrupted = true;
  m_changed.notify_all();
}

void TagWaits::Observe(const char* name, const void* value, u32 size) {
  TagWaits& own = Own();
  const std::lock_guard lock(own.m_lock);
  std::optional<u32>& held = own.m_values[name];
  held.reset();
  if (size == sizeof(u32) && value != nullptr) std::memcpy(&held.emplace(), value, sizeof(u32));
  own.m_changed.notify_all();
}

/// The lock is free during the registration: it may call back at once.
void TagWaits::Register(const std::string& name) {
  {
    const std::lock_guard lock(m_lock);
    if (!m_values.try_emplace(name).second) return;
  }
  if (const i32 error = AaConfigTagRegister(name.c_str(), Observe)) {
    const std::lock_guard lock(m_lock);
    m_values.erase(name);
    m_changed.notify_all();
    throw MsgHandlingException("Tag " + name + " cannot be observed: " + std::strerror(error), __FILE__, __LINE__);
  }
}

}  // namespace hwapi::nub
