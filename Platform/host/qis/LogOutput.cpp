#include "LogOutput.h"

#include "ComLog.h"
#include "Replacement.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <new>

namespace hwapi::qis {
namespace {

/// As write. A pipe that nobody reads any more would end the process by a signal, which goes to the thread that writes:
/// blocking it for the one write leaves it to the program what the signal does at its own writes. Only for sockets
/// would there be a flag.
ssize_t WriteWithoutSignal(int fd, std::string_view bytes) {
  sigset_t pipe;
  sigset_t before;
  sigset_t pending;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
  ::sigpending(&pending);
  const ssize_t size = Uninterrupted([&] { return ::write(fd, bytes.data(), bytes.size()); });
  if (size < 0 && errno == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
    const timespec noTime{};
    ::sigtimedwait(&pipe, nullptr, &noTime);
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return size;
}

}  // namespace

LogOutput& LogOutput::Own() {
  alignas(LogOutput) static std::array<std::byte, sizeof(LogOutput)> memory;  // the log works without free memory, too
  static auto* const output = new (memory.data()) LogOutput;                  // threads may log after the end of main
  return *output;
}

void LogOutput::Put(LogLine& line) {
  while (const std::uint64_t missing = Missing()) {
    if (Report(missing)) {
      break;
    }
  }
  const std::string_view bytes = line.End();
  const std::lock_guard lock(m_mutex);
  if (m_missing != 0 || !Write(bytes)) {
    ++m_missing;
  }
}

std::uint64_t LogOutput::Missing() {
  const std::lock_guard lock(m_mutex);
  return m_missing;
}

/// Composes outside of the lock: the time in the line comes from the clock, which may log.
/// @return false when another number is missing meanwhile
bool LogOutput::Report(std::uint64_t missing) {
  LogLine line(EAaSysLogSeverityLevel_Warning, kPlatformFeature);
  line.Print(
      "Lines missing here: %llu; the log could not be written: its reader stood still or was gone, or its disk was "
      "full",
      static_cast<unsigned long long>(missing));
  const std::string_view bytes = line.End();
  const std::lock_guard lock(m_mutex);
  if (m_missing != missing) {
    return false;
  }
  if (Write(bytes)) {
    m_missing = 0;
  }
  return true;
}

/// @return false when the line is not in the log, or not the whole of it
bool LogOutput::Write(std::string_view bytes) {
  if (!LookAtTarget()) {
    return false;
  }
  if (m_torn && WriteNow("\n") != 1) {
    return false;
  }
  const ssize_t size = WriteNow(bytes);
  m_torn = size > 0 && size != static_cast<ssize_t>(bytes.size());
  return size == static_cast<ssize_t>(bytes.size());
}

ssize_t LogOutput::WriteNow(std::string_view bytes) const {
  if (m_way == Way::Socket) {
    return Uninterrupted(
        [&] { return ::send(STDERR_FILENO, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL); });
  }
  pollfd room{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
  if (m_way == Way::Asked && ::poll(&room, 1, 0) <= 0) {
    return 0;
  }
  return WriteWithoutSignal(m_way == Way::Own ? m_own.Get() : STDERR_FILENO, bytes);
}

/// @return false when there is none
bool LogOutput::LookAtTarget() {
  struct stat target {};
  if (::fstat(STDERR_FILENO, &target) != 0) {
    return false;
  }
  if (target.st_dev == m_target.st_dev && target.st_ino == m_target.st_ino && target.st_mode == m_target.st_mode) {
    return true;
  }
  m_target = target;
  m_torn = false;
  m_own.Reset();
  if (S_ISSOCK(target.st_mode)) {
    m_way = Way::Socket;
  } else if (S_ISFIFO(target.st_mode) || (S_ISCHR(target.st_mode) && ::isatty(STDERR_FILENO) == 1)) {
    m_own.Reset(::open("/proc/self/fd/2", O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    m_way = m_own ? Way::Own : Way::Asked;
  } else {
    m_way = Way::Plain;
  }
  return true;
}

}  // namespace hwapi::qis
