#include "LogLimit.h"

#include "ComLog.h"
#include "LogLine.h"
#include "LogOutput.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string_view>

namespace hwapi::qis {
namespace {

constexpr std::int64_t kLookEveryNs = 100'000'000;

/// On whose behalf a thread logs.
struct Logging {
  TAaSysComSicad sender = 0;      ///< of the message that it handles; 0: one of this process, or none
  bool handlesStrangers = false;  ///< another process's message
  bool isPlatforms = false;

  bool IsLimited() const { return handlesStrangers || isPlatforms; }
};

constinit thread_local Logging t_logging;

/// The limits of this process.
struct Limits {
  std::mutex mutex;
  LogLimit limit;
  std::atomic<bool> hasLeftOut = false;  ///< as the limit has it; read without the lock
};

Limits& TheLimits() {
  static constinit Limits limits;
  return limits;
}

std::int64_t NowNs() { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count(); }

void Tell(const LogLimit::LeftOut& leftOut) {
  const LogCause& cause = leftOut.cause;
  const bool isKnown = cause.format != nullptr;
  LogLine line(isKnown ? cause.level : EAaSysLogSeverityLevel_Warning, isKnown ? cause.feature : kPlatformFeature);
  const auto lines = static_cast<unsigned long long>(leftOut.lines);
  if (!isKnown) {
    line.Print("Lines left out here: %llu; messages of too many senders cause too many", lines);
  } else if (cause.sender == 0) {
    line.Print("Lines like \"%s\" left out here: %llu; what other processes do causes too many", leftOut.begin.data(),
               lines);
  } else {
    line.Print("Lines like \"%s\" left out here: %llu; messages of task 0x%04X of board %u, cpu %u cause too many",
               leftOut.begin.data(), lines, cause.sender & 0xFFFFu, unsigned{AaSysComNmapGetBoard(cause.sender)},
               unsigned{AaSysComNmapGetCpu(cause.sender)});
  }
  LogOutput::Own().Put(line);
}

/// Tells what was left out of causes that may log again.
void TellLeftOut() {
  Limits& limits = TheLimits();
  for (;;) {
    LogLimit::LeftOut leftOut;
    {
      const std::lock_guard lock(limits.mutex);
      const bool found = limits.limit.TakeLeftOut(leftOut, NowNs());
      limits.hasLeftOut.store(limits.limit.HasLeftOut(), std::memory_order_relaxed);
      if (!found) {
        return;
      }
    }
    Tell(leftOut);
  }
}

}  // namespace

void HandlingMessageFrom(TAaSysComSicad sender, bool ownProcess) {
  t_logging.sender = ownProcess ? 0 : sender;
  t_logging.handlesStrangers = !ownProcess;
  if (TheLimits().hasLeftOut.load(std::memory_order_relaxed)) {
    TellLeftOut();
  }
}

void LimitLinesOfThisThread() { t_logging.isPlatforms = true; }

bool MayLog(EAaSysLogSeverityLevel level, u32 feature, const char* format) {
  if (!t_logging.IsLimited()) {
    return true;
  }
  Limits& limits = TheLimits();
  if (limits.hasLeftOut.load(std::memory_order_relaxed)) {
    TellLeftOut();
  }
  const std::lock_guard lock(limits.mutex);
  const bool may =
      limits.limit.MayLog({.format = format, .feature = feature, .level = level, .sender = t_logging.sender}, NowNs());
  limits.hasLeftOut.store(limits.limit.HasLeftOut(), std::memory_order_relaxed);
  return may;
}

bool LogLimit::MayLog(const LogCause& cause, std::int64_t nowNs) {
  Entry& entry = EntryOf(cause, nowNs);
  if (!entry.silenced && entry.bucket.Left(nowNs) > 0 && m_all.Left(nowNs) > 0) {
    entry.bucket.Take(nowNs);
    m_all.Take(nowNs);
    return true;
  }
  if (!entry.silenced) {
    entry.silenced = true;
    ++m_silenced;
    const std::string_view format = &entry != &m_others ? cause.format : "";
    entry.leftOut.begin = {};
    format.copy(entry.leftOut.begin.data(), entry.leftOut.begin.size() - 1);
  }
  ++entry.leftOut.lines;
  return false;
}

bool LogLimit::MaySpeakAgain(const Entry& entry, std::int64_t nowNs) const {
  return entry.silenced && entry.bucket.Left(nowNs) >= kRate && m_all.Left(nowNs) >= kRate;
}

bool LogLimit::TakeLeftOut(LeftOut& leftOut, std::int64_t nowNs) {
  if (m_silenced == 0 || nowNs < m_nextLookNs) {
    return false;
  }
  const auto take = [&](Entry& entry) {
    if (!MaySpeakAgain(entry, nowNs)) {
      return false;
    }
    leftOut = entry.leftOut;
    entry.leftOut.lines = 0;
    entry.silenced = false;
    entry.bucket.Take(nowNs);
    m_all.Take(nowNs);
    --m_silenced;
    return true;
  };
  if (take(m_others) || std::ranges::any_of(m_entries, [&](auto& ways) { return std::ranges::any_of(ways, take); })) {
    return true;
  }
  m_nextLookNs = nowNs + kLookEveryNs;
  return false;
}

/// The entry of the cause; a cause that was quiet for long gives its place away.
LogLimit::Entry& LogLimit::EntryOf(const LogCause& cause, std::int64_t nowNs) {
  const auto hash = reinterpret_cast<std::uintptr_t>(cause.format) * 31 + cause.sender * 2654435761u;
  auto& ways = m_entries[hash / 8 % kSets];
  const auto known = std::ranges::find(ways, cause, [](const Entry& entry) { return entry.leftOut.cause; });
  if (known != ways.end()) {
    return *known;
  }
  const auto free = std::ranges::find_if(
      ways, [&](const Entry& entry) { return !entry.silenced && entry.bucket.Left(nowNs) == kBurst; });
  if (free == ways.end()) {
    return m_others;
  }
  *free = Entry();
  free->leftOut.cause = cause;
  return *free;
}

}  // namespace hwapi::qis
