/// @file
/// The tag observers of this process.
#pragma once

#include "AaConfig.h"
#include "EventLoop.h"
#include "TagReader.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace hwapi::qis {

/// One registration, served by a thread of its own. Never destroyed: it lasts as long as the process.
class TagObserver {
 public:
  /// @param fallback value of a tag that was never set, if it has one
  TagObserver(const std::string& name, TAaConfigTagObserver callback, std::optional<std::string> fallback);

  const std::string& Name() const { return m_name; }
  /// Starts calling back.
  /// @return 0, else an errno value
  int Start();
  /// Tells it that the tag may have been set.
  void Wake();

 private:
  static void* Run(void* observer);
  void Serve();
  bool Call(const std::string& value);

  const std::string m_name;
  const TAaConfigTagObserver m_callback;
  TagReader m_reader;
  std::optional<std::string> m_first;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_woken = false;
};

/// All observers, woken by changes in the folder of the tags.
class TagObservers : public EventHandler {
 public:
  static const std::shared_ptr<TagObservers>& Own();

  /// As AaConfigTagRegister.
  int Add(const std::string& name, TAaConfigTagObserver callback, std::optional<std::string> fallback);
  void OnReady(std::uint64_t key) override;

 private:
  int Watch();
  int Inotify();
  void WakeNamed(const char* name);

  std::mutex m_mutex;
  Fd m_inotify;
  std::vector<std::unique_ptr<TagObserver>> m_observers;
};

}  // namespace hwapi::qis
