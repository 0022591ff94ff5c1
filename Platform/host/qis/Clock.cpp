#include "Clock.h"

#include "BoardDescription.h"
#include "Fd.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

namespace hwapi::qis {
namespace {

static_assert(sizeof(time_t) == 8 && sizeof(off_t) == 8, "built with _TIME_BITS=64: times beyond 2038 work");

std::int64_t ReadUs(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

/// @return all zero when it cannot be read
BootId ReadBootId() {
  BootId id{};
  const Fd file(::open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC));
  if (file && ::read(file.Get(), id.data(), id.size() - 1) < 0) {
    id.fill('\0');
  }
  return id;
}

thread_local bool t_beingMade = false;

/// The board's clock at its beginning.
ClockState Fresh() {
  const auto& described = board::OwnBoard().clock;
  return {.origin = {.boot = ReadBootId(), .speed = described.speed, .startMs = described.startMs.value_or(-1)},
          .monotonicEpochUs = ReadUs(CLOCK_MONOTONIC),
          .boardEpochUs = described.startMs ? *described.startMs * 1000 : ReadUs(CLOCK_REALTIME)};
}

}  // namespace

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
      m_file(Fresh()),
      m_sleepers(m_file.Descriptor()) {}

UtcUs Clock::WithoutOffset(const ClockState& state) const {
  if (m_isHostClock) {
    return ReadUs(CLOCK_REALTIME);
  }
  if (StandsStill()) {
    return state.boardEpochUs + state.passedUs;
  }
  return state.boardEpochUs + (ReadUs(CLOCK_MONOTONIC) - state.monotonicEpochUs) * std::int64_t{m_speed};
}

UtcUs Clock::Now() const {
  const ClockState state = m_file.Read();
  return WithoutOffset(state) + state.offsetUs;
}

int Clock::Set(UtcUs now) {
  const int error = m_file.Change([&](ClockState& state) {
    const UtcUs without = WithoutOffset(state);
    if (StandsStill() && now > without + state.offsetUs) {
      state.passedUs += now - (without + state.offsetUs);
    } else {
      state.offsetUs = now - without;
    }
  });
  m_sleepers.Wake();
  return error;
}

std::int64_t Clock::RealNsOf(std::uint64_t boardUs) const {
  const auto ns = static_cast<std::int64_t>(boardUs * 1000 / std::max(m_speed, 1U));
  return boardUs == 0 ? 0 : std::max<std::int64_t>(1, ns);
}

std::int64_t Clock::PassedUs() const { return m_file.Read().passedUs; }

}  // namespace hwapi::qis
