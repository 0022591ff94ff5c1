#include "ComLog.h"

#include "AaSysLog.h"

#include <array>
#include <atomic>

namespace hwapi::qis {
namespace {

constexpr u32 kCounters = EAaSysComCounter_Unexpected + 1;
constinit std::array<std::atomic<u32>, kCounters> g_counters{};

}  // namespace

void Count(EAaSysComCounter counter, u32 amount) { g_counters[counter].fetch_add(amount, std::memory_order_relaxed); }

u32 CounterValue(EAaSysComCounter counter) {
  return counter < kCounters ? g_counters[counter].load(std::memory_order_relaxed) : 0;
}

void LossLog::Lost(EAaSysComCounter counter, u32 amount, const char* reason) {
  Count(counter, amount);
  m_lost += amount;
  if (m_lost < m_nextLine) {
    return;
  }
  while (m_nextLine <= m_lost && m_nextLine < 1'000'000'000) {
    m_nextLine *= 10;
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "Cannot deliver to task 0x%04X of board %u, cpu %u: %s; messages dropped so far: %u",
                 m_receiver & 0xFFFFu, unsigned{AaSysComNmapGetBoard(m_receiver)},
                 unsigned{AaSysComNmapGetCpu(m_receiver)}, reason, m_lost);
}

void LossLog::TellRecovery() {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, kPlatformFeature,
                 "Messages to task 0x%04X of board %u, cpu %u are delivered again; %u were dropped",
                 m_receiver & 0xFFFFu, unsigned{AaSysComNmapGetBoard(m_receiver)},
                 unsigned{AaSysComNmapGetCpu(m_receiver)}, m_lost);
  m_lost = 0;
  m_nextLine = 1;
}

}  // namespace hwapi::qis
