#include "TagObserver.h"

#include "AaSysLog.h"
#include "CallbackGate.h"
#include "ComLog.h"
#include "PlatformThread.h"
#include "ThreadWatch.h"

#include <sys/inotify.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>

namespace hwapi::qis {

TagObserver::TagObserver(const std::string& name, TAaConfigTagObserver callback, std::optional<std::string> fallback)
    : m_name(name), m_callback(callback), m_reader(name), m_first(std::move(fallback)) {
  if (m_reader.Newest()) {
    m_first = m_reader.Newest()->value;
  }
}

int TagObserver::Start() { return StartPlatformThread(&Run, this); }

void TagObserver::Wake() {
  const std::lock_guard lock(m_mutex);
  m_woken = true;
  m_changed.notify_one();
}

void* TagObserver::Run(void* observer) {
  auto* const self = static_cast<TagObserver*>(observer);
  constexpr std::size_t kNameEnd = 11;  // the ends of tag names differ, their beginnings do not
  const std::string& name = self->m_name;
  const WatchedThread watched(("tag " + name.substr(name.size() > kNameEnd ? name.size() - kNameEnd : 0)).c_str());
  self->Serve();
  return nullptr;
}

void TagObserver::Serve() {
  if (m_first && !Call(*m_first)) {
    return;
  }
  m_first.reset();
  for (;;) {
    while (const auto value = m_reader.Next()) {
      if (!Call(*value)) {
        return;
      }
    }
    std::unique_lock lock(m_mutex);
    AtRest([&] { m_changed.wait(lock, [this] { return m_woken; }); });
    m_woken = false;
  }
}

/// @return false when the process ends
bool TagObserver::Call(const std::string& value) {
  const CallbackGate::Pass pass;
  if (!pass) {
    return false;
  }
  try {
    m_callback(m_name.c_str(), value.c_str(), static_cast<u32>(value.size()));
  } catch (const std::exception& exception) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "The observer of the tag %s ended with: %s",
                   m_name.c_str(), exception.what());
  } catch (...) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "The observer of the tag %s ended with an unknown exception", m_name.c_str());
  }
  return true;
}

const std::shared_ptr<TagObservers>& TagObservers::Own() {
  static const auto* const observers =
      new std::shared_ptr<TagObservers>(std::make_shared<TagObservers>());  // outlives the end of main
  return *observers;
}

int TagObservers::Watch() {
  if (m_inotify) {
    return 0;
  }
  if (TagFolder().Get() < 0) {
    return TagFolder().Error();
  }
  Fd inotify(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (!inotify || ::inotify_add_watch(inotify.Get(), TagFolder().Path().c_str(), IN_MODIFY | IN_MOVED_TO) < 0 ||
      EventLoop::Own().Watch(inotify.Get(), Own()) == 0) {
    const int error = errno;
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "Cannot watch the tags in %s: %s",
                   TagFolder().Path().c_str(), std::strerror(error));
    return error;
  }
  m_inotify = std::move(inotify);
  return 0;
}

int TagObservers::Add(const std::string& name, TAaConfigTagObserver callback, std::optional<std::string> fallback) {
  CallbackGate::CloseAtExit();
  const std::lock_guard lock(m_mutex);
  if (const int error = Watch(); error != 0) {
    return error;
  }
  // Its reader begins after the watch: a set in between wakes it.
  m_observers.push_back(std::make_unique<TagObserver>(name, callback, std::move(fallback)));
  const int error = m_observers.back()->Start();
  if (error != 0) {
    m_observers.pop_back();
  }
  return error;
}

/// One buffer at a time, and read without the lock: somebody who sets tags all the time keeps neither the thread for
/// connections nor a registration waiting.
void TagObservers::OnReady(std::uint64_t) {
  constexpr std::size_t kBufferSize = 4096;
  alignas(inotify_event) std::array<char, kBufferSize> buffer;
  const ssize_t size = ::read(Inotify(), buffer.data(), buffer.size());
  const std::lock_guard lock(m_mutex);
  for (ssize_t offset = 0; offset < size;) {
    const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
    WakeNamed(event->len != 0 ? event->name : nullptr);
    offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
  }
}

/// @return the descriptor, which stays open once it is there
int TagObservers::Inotify() {
  const std::lock_guard lock(m_mutex);
  return m_inotify.Get();
}

/// @param name null: all of them, as events were lost
void TagObservers::WakeNamed(const char* name) {
  for (const auto& observer : m_observers) {
    if (name == nullptr || observer->Name() == name) {
      observer->Wake();
    }
  }
}

}  // namespace hwapi::qis
