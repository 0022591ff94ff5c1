/// @file
/// Where the lines of the log go: standard error, without ever waiting for whoever reads it.
#pragma once

#include "Fd.h"
#include "LogLine.h"

#include <sys/stat.h>

#include <cstdint>
#include <mutex>
#include <string_view>

namespace hwapi::qis {

/// Lines keep their order. One that cannot be written at once is dropped and counted; before the next one that can, a
/// line says how many are missing there. May be used from every thread.
///
/// Standard error may be shared with other processes, so it is never made non-blocking itself: a socket is written with
/// a flag for the one call, a pipe or a terminal through a description of our own. What is on standard error may be
/// replaced at any time, and its reader may end.
class LogOutput {
 public:
  static LogOutput& Own();

  /// Ends the line and writes it, or counts it.
  void Put(LogLine& line);

 private:
  enum class Way {
    Plain,   ///< a file, which does not keep anybody waiting
    Socket,  ///< a call can say that it does not wait
    Own,     ///< a pipe or a terminal: through m_own
    Asked,   ///< the same, where it cannot be opened once more: asked for room before
  };

  LogOutput() = default;
  std::uint64_t Missing();
  bool Report(std::uint64_t missing);
  bool Write(std::string_view bytes);
  ssize_t WriteNow(std::string_view bytes) const;
  bool LookAtTarget();

  std::mutex m_mutex;
  std::uint64_t m_missing = 0;  ///< lines since the last one that was written
  bool m_torn = false;          ///< only the beginning of a line went out
  struct stat m_target {};      ///< what standard error was when it was last looked at
  Way m_way = Way::Plain;
  Fd m_own;
};

}  // namespace hwapi::qis
