#include "EndpointTags.h"

#include "Access.h"
#include "TaskName.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <optional>
#include <string_view>

namespace hwapi::qis {
namespace {

constexpr std::string_view kTag = "app.hwapi.online.";
constexpr u32 kTasks = 0x10000;
constexpr u32 kBits = 32;

/// A bit for each task of this board: whether this process has given it back.
constinit std::array<std::atomic<u32>, kTasks / kBits> g_givenBack{};

/// @return the task that a tag announces
std::optional<u32> TaskOf(std::string_view tag) {
  if (!tag.starts_with(kTag)) {
    return std::nullopt;
  }
  const std::string_view digits = tag.substr(kTag.size());
  u32 task = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), task, 16);
  const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
  return isWhole && task < kTasks ? std::optional(task) : std::nullopt;
}

/// Knocks at the task's name; nothing is sent.
bool IsServedByAnother(TAaSysComSicad task) {
  const Fd connection = ConnectToTask(task);
  if (!connection) {
    return errno == EAGAIN;  // so many knock there that there is no room for one more
  }
  return PeerOf(connection.Get()).pid != ::getpid();
}

}  // namespace

void EndpointGivenBack(TAaSysComSicad task) {
  const u32 number = task % kTasks;
  if (task == AaSysComSicadGet(number, AaSysComGetOwnNid())) {
    g_givenBack[number / kBits].fetch_or(1u << number % kBits, std::memory_order_relaxed);
  }
}

bool AnnouncesAnothersEndpoint(const std::string& tag) {
  const std::optional<u32> task = TaskOf(tag);
  if (!task || (g_givenBack[*task / kBits].load(std::memory_order_relaxed) & 1u << *task % kBits) == 0) {
    return false;
  }
  return IsServedByAnother(AaSysComSicadGet(*task, AaSysComGetOwnNid()));
}

}  // namespace hwapi::qis
