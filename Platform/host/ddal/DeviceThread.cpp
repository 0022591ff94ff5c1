#include "DeviceThread.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace hwapi::ddal {
namespace {

using std::chrono::steady_clock;

constexpr DeviceThread::Duration kForEver = DeviceThread::Duration::max();
/// Deadlines that an access gets while the machine leaves its thread no processor.
constexpr int kPatience = 20;
constexpr std::size_t kStack = 128 * 1024;  // of which a page or two are used

/// Waits in the kernel while @p word holds @p value, at most so long.
void Sleep(std::atomic<std::uint32_t>& word, std::uint32_t value, std::chrono::nanoseconds limit) {
  // What this system call takes on every machine, whatever the C library's times have become.
  const struct {
    long seconds, nanoseconds;
  } time = {static_cast<long>(limit.count() / 1'000'000'000), static_cast<long>(limit.count() % 1'000'000'000)};
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, limit != limit.max() ? &time : nullptr, nullptr, 0);
}

}  // namespace

/// Takes a step that only one side may take. @return whether it was the one
bool DeviceThread::Change(std::uint32_t from, AccessState to) { return m_state.compare_exchange_strong(from, to); }

/// Wakes those who wait for a step that was taken. Either this sees the sleeper, or the sleeper sees the step.
void DeviceThread::Wake() {
  if (m_sleepers.load() != 0) syscall(SYS_futex, &m_state, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

void DeviceThread::Enter(AccessState state) {
  m_state.exchange(state);
  Wake();
}

/// Sleeps at once rather than look for a while: a thread that is woken starts on its waker's processor as a rule, and
/// would wait for the one that looks.
/// @param deadline kForEver: none
/// @return whether a state was reached
template <typename Condition>
bool DeviceThread::Await(Condition reached, Duration deadline) {
  const auto begin = steady_clock::now();
  for (auto now = begin;; now = steady_clock::now()) {
    const auto left = deadline == kForEver ? std::chrono::nanoseconds::max() : begin + deadline - now;
    m_sleepers.fetch_add(1);
    const std::uint32_t state = m_state.load();
    const bool sleep = !reached(state) && left > left.zero();
    if (sleep) Sleep(m_state, state, left);
    m_sleepers.fetch_sub(1);
    if (!sleep) return reached(state);
  }
}

ssize_t DeviceThread::Read(int fd, char* buffer, std::size_t size, Duration deadline) {
  if (!Claim()) return -1;
  m_kind = Kind::Read;
  m_fd = fd;
  m_size = static_cast<std::uint32_t>(std::min(size, kMaxSize));
  return Result(Post(deadline), buffer);
}

ssize_t DeviceThread::ReadOnce(Descriptor fd, char* buffer, std::size_t size, Duration deadline) {
  if (!Claim()) return -1;
  m_kind = Kind::ReadAndClose;
  m_fd = fd.Get();
  m_size = static_cast<std::uint32_t>(std::min(size, kMaxSize));
  const Outcome outcome = Post(deadline);
  if (outcome != Outcome::NotBegun) fd.Release();
  return Result(outcome, buffer);
}

ssize_t DeviceThread::Write(int fd, std::string_view text, Duration deadline) {
  if (!Claim()) return -1;
  m_kind = Kind::Write;
  m_fd = fd;
  m_size = static_cast<std::uint32_t>(text.copy(m_text.data(), kMaxSize));
  return Result(Post(deadline), nullptr);
}

/// Gets the right to make an access; who has it now gives it back or is late before long. @return whether it was got;
/// errno otherwise
bool DeviceThread::Claim() {
  while (!Change(kIdle, kClaimed)) {
    const auto decided = [](std::uint32_t state) { return state == kIdle || state == kLate; };
    if (Hangs() || !Await(decided, kForEver) || Hangs()) {
      errno = EALREADY;
      return false;
    }
  }
  if (m_started || Start()) return true;
  const int error = errno;
  Enter(kIdle);
  errno = error;
  return false;
}

DeviceThread::Outcome DeviceThread::Post(Duration deadline) {
  Enter(kPosted);
  for (int patience = kPatience; patience > 0; --patience) {
    if (Await([](std::uint32_t state) { return state == kDone; }, deadline)) return Outcome::Answered;
    if (!LacksProcessor()) break;
  }
  switch (TakeBack(m_state)) {
    case kPosted:
      Wake();
      return Outcome::NotBegun;
    case kRunning:
      return Outcome::Late;
    default:
      return Outcome::Answered;
  }
}

/// @return whether the thread does not wait in the kernel but for a processor: then the machine is late, not the device
bool DeviceThread::LacksProcessor() const {
  const int file = m_stat;
  if (file == kNotBegun) return true;
  char text[512];
  const ssize_t size = pread(file, text, sizeof text, 0);
  if (size <= 0) return false;
  const std::string_view stat(text, static_cast<std::size_t>(size));
  const std::size_t name = stat.rfind(')');
  return name != stat.npos && stat.substr(name).starts_with(") R");
}

/// @param buffer null: the access has written
ssize_t DeviceThread::Result(Outcome outcome, char* buffer) {
  if (outcome != Outcome::Answered) {
    errno = ETIME;
    return -1;
  }
  const ssize_t result = m_result;
  const int error = m_error;
  if (buffer != nullptr && result > 0) std::memcpy(buffer, m_text.data(), static_cast<std::size_t>(result));
  Enter(kIdle);
  errno = error;
  return result;
}

void DeviceThread::RunAccess() {
  m_result = m_kind == Kind::Write ? pwrite(m_fd, m_text.data(), m_size, 0) : pread(m_fd, m_text.data(), m_size, 0);
  m_error = errno;
  if (m_kind == Kind::ReadAndClose) close(m_fd);
}

void DeviceThread::Serve() {
  for (;;) {
    Await([](std::uint32_t state) { return state == kPosted; }, kForEver);
    if (!Change(kPosted, kRunning)) continue;  // it was taken back
    RunAccess();
    if (Change(kRunning, kDone)) {
      Wake();
    } else {
      Enter(kIdle);  // it is late: nobody wants the answer any more
    }
  }
}

void* DeviceThread::Main(void* self) {
  auto* thread = static_cast<DeviceThread*>(self);
  thread->m_stat = open("/proc/thread-self/stat", O_RDONLY | O_CLOEXEC);
  pthread_setname_np(pthread_self(), thread->m_name);
  thread->Serve();
}

/// Signals are for others, as with every thread of the platform. @return whether it was started; errno otherwise
bool DeviceThread::Start() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, kStack);
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_t thread;
  const int error = pthread_create(&thread, &attributes, Main, this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  m_started = error == 0;
  errno = error;
  return m_started;
}

}  // namespace hwapi::ddal
