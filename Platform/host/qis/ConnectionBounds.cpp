#include "ConnectionBounds.h"

#include <sys/resource.h>

#include <algorithm>

namespace hwapi::qis {

ConnectionBounds BoundsOf(std::uint64_t descriptors) {
  constexpr std::uint64_t kOtherDescriptors = 64;  // files, sensors, sockets and threads of the process itself
  constexpr std::uint64_t kPerSender = 3;          // its connection and both ends of its channel
  constexpr std::uint64_t kPerReceiver = 2;        // the connection and the sending end of the channel
  constexpr std::uint64_t kMin = 8;
  constexpr std::uint64_t kMax = 1400;
  const std::uint64_t free = descriptors > kOtherDescriptors ? descriptors - kOtherDescriptors : 0;
  const auto all = static_cast<std::size_t>(std::clamp(free / (kPerSender + kPerReceiver), kMin, kMax));
  return {.all = all, .perUser = all * 3 / 4};
}

const ConnectionBounds& OwnBounds() {
  static const ConnectionBounds bounds = [] {
    rlimit limit{};
    return BoundsOf(::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0);
  }();
  return bounds;
}

}  // namespace hwapi::qis
