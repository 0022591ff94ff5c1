/// @file
/// Waiting for the values of public tags.
#pragma once

#include "GloTypes.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace hwapi::nub {

/// The tags that this process waits for. Never destroyed, as tags are observed for the life of the process. Every
/// operation may be called from every thread.
class TagWaits {
 public:
  static TagWaits& Own();

  /// Blocks until the tag holds @p value (4 bytes).
  /// @throw MsgHandlingException when the tag cannot be observed, or when Interrupt is or was called
  void WaitFor(const std::string& name, u32 value);
  /// Ends every wait, also later ones.
  void Interrupt();

 private:
  static void Observe(const char* name, const void* value, u32 size);
  void Register(const std::string& name);

  std::mutex m_lock;
  std::condition_variable m_changed;
  std::map<std::string, std::optional<u32>> m_values;  ///< of every observed tag
  bool m_interrupted = false;
};

}  // namespace hwapi::nub
