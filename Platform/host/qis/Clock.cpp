#include "Clock.h"

#include "AaSysLog.h"
#include "BoardDescription.h"
#include "ComLog.h"
#include "LockedFile.h"
#include "RunFolder.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>

namespace hwapi::qis {
namespace {

/// Identity of the running kernel: the monotonic clock means nothing after the next boot.
using BootId = std::array<char, 40>;

std::int64_t ReadUs(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

BootId ReadBootId() {
  BootId id{};
  const Fd file(::open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC));
  if (file && ::read(file.Get(), id.data(), id.size() - 1) < 0) {
    id.fill('\0');
  }
  return id;
}

thread_local bool t_beingMade = false;

/// What the epoch was made from; another board needs another one.
struct Origin {
  BootId boot{};
  std::int64_t speed = 0;
  std::int64_t startMs = 0;

  friend bool operator==(const Origin&, const Origin&) = default;
};

}  // namespace

/// The file's content. Origin and epoch are written by the first process under the file's lock.
struct Clock::Shared {
  Origin origin;
  std::int64_t monotonicEpochUs;
  UtcUs boardEpochUs;
  std::atomic<std::int64_t> offsetUs;
  std::atomic<std::int64_t> passedUs;  ///< since the epoch, of a clock that stands still
  std::atomic<std::uint32_t> moves;    ///< what its sleepers wait on
  static_assert(std::atomic<std::int64_t>::is_always_lock_free, "shared between processes");
  static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t), "the kernel's futex has 32 bits");
};

Clock& Clock::Own() {
  static auto* const clock = [] {
    t_beingMade = true;
    auto* const made = new Clock;  // never destroyed: threads may read it after the end of main
    t_beingMade = false;
    return made;
  }();
  return *clock;
}

bool Clock::IsBeingMade() { return t_beingMade; }

Clock::Clock()
    : m_speed(board::OwnBoard().clock.speed),
      m_isHostClock(m_speed == 1 && !board::OwnBoard().clock.startMs),
      m_shared(Map()) {}

Clock::Shared* Clock::Map() const {
  const auto& described = board::OwnBoard().clock;
  const Origin origin{.boot = ReadBootId(), .speed = m_speed, .startMs = described.startMs.value_or(-1)};
  const RunFolder run("");
  const Fd file = run.Get() >= 0 ? OpenLocked(run.Get(), "clock", run.FileMode(), LockWait::Wait) : Fd();
  void* memory = MAP_FAILED;
  if (file && ::ftruncate(file.Get(), sizeof(Shared)) == 0) {
    memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  }
  if (memory == MAP_FAILED) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "The board's clock in %s cannot be shared (%s): this process keeps its own", run.Path().c_str(),
                   std::strerror(errno));
    memory = new Shared{};
  }
  auto* const shared = static_cast<Shared*>(memory);
  if (!(shared->origin == origin)) {
    shared->monotonicEpochUs = ReadUs(CLOCK_MONOTONIC);
    shared->boardEpochUs = described.startMs ? *described.startMs * 1000 : ReadUs(CLOCK_REALTIME);
    shared->offsetUs = 0;
    shared->passedUs = 0;
    shared->origin = origin;
  }
  Unlock(file.Get());  // closing it would not: the mapping keeps it open
  return shared;
}

UtcUs Clock::WithoutOffset() const {
  if (m_isHostClock) {
    return ReadUs(CLOCK_REALTIME);
  }
  if (StandsStill()) {
    return m_shared->boardEpochUs + PassedUs();
  }
  return m_shared->boardEpochUs + (ReadUs(CLOCK_MONOTONIC) - m_shared->monotonicEpochUs) * std::int64_t{m_speed};
}

UtcUs Clock::Now() const { return WithoutOffset() + m_shared->offsetUs.load(std::memory_order_relaxed); }

void Clock::Set(UtcUs now) {
  if (StandsStill()) {
    if (const UtcUs forward = now - Now(); forward > 0) {
      Pass(forward);
      return;
    }
  }
  m_shared->offsetUs.store(now - WithoutOffset(), std::memory_order_relaxed);
}

std::int64_t Clock::RealNsOf(std::uint64_t boardUs) const {
  const auto ns = static_cast<std::int64_t>(boardUs * 1000 / std::max(m_speed, 1U));
  return boardUs == 0 ? 0 : std::max<std::int64_t>(1, ns);
}

std::int64_t Clock::PassedUs() const { return m_shared->passedUs.load(std::memory_order_acquire); }

std::uint32_t Clock::Moves() const { return m_shared->moves.load(std::memory_order_acquire); }

void Clock::Pass(UtcUs us) {
  m_shared->passedUs.fetch_add(us, std::memory_order_acq_rel);
  WakeSleepers();
}

// The sleepers are of several processes, which waiting on a std::atomic does not reach.

void Clock::SleepUntilMoved(std::uint32_t seen) const {
  ::syscall(SYS_futex, &m_shared->moves, FUTEX_WAIT, seen, nullptr, nullptr, 0);
}

void Clock::WakeSleepers() {
  m_shared->moves.fetch_add(1, std::memory_order_acq_rel);
  ::syscall(SYS_futex, &m_shared->moves, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace hwapi::qis
