#include "FanGuardProcess.h"

#include "FanRecord.h"
#include "Sysfs.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace hwapi::ddal {
namespace {

constexpr std::size_t kMostFans = 16;

/// A fan to hand back.
struct KeptFan {
  FanRecord record;
  FanDescriptors attributes;
};

/// The fans in the order in which they were first changed.
struct KeptFans {
  KeptFan fans[kMostFans];
  std::size_t count;
};

/// Closes the descriptors from @p first to @p last.
void CloseRange(unsigned first, unsigned last) {
  if (first > last || close_range(first, last, 0) == 0) return;
  // A kernel before 5.9.
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  for (unsigned fd = first; fd < limit.rlim_cur && fd <= last; ++fd) close(static_cast<int>(fd));
}

/// Closes what was inherited: sockets, locks and pipes of the process must be free as soon as that one is gone.
void CloseAllBut(int one, int other) {
  const auto low = static_cast<unsigned>(std::min(one, other));
  const auto high = static_cast<unsigned>(std::max(one, other));
  if (low > 0) CloseRange(0, low - 1);
  CloseRange(low + 1, high - 1);
  CloseRange(high + 1, ~0U);
}

void CloseAttributes(const KeptFan& fan) {
  for (const int fd : fan.attributes) {
    if (fd >= 0) close(fd);
  }
}

/// Adds a fan; a newer record of the same fan takes the place of the older.
void Keep(KeptFans& kept, const KeptFan& fan) {
  for (std::size_t i = 0; i < kept.count; ++i) {
    if (kept.fans[i].record.fan != fan.record.fan) continue;
    CloseAttributes(kept.fans[i]);
    kept.fans[i] = fan;
    return;
  }
  if (kept.count < kMostFans) kept.fans[kept.count++] = fan;
}

/// Takes the descriptors that came with a record.
void TakeDescriptors(msghdr& message, KeptFan& fan) {
  fan.attributes.fill(-1);
  const cmsghdr* control = CMSG_FIRSTHDR(&message);
  if (control == nullptr || control->cmsg_level != SOL_SOCKET || control->cmsg_type != SCM_RIGHTS) return;
  const unsigned char* next = CMSG_DATA(control);
  const std::size_t size = static_cast<std::size_t>(control->cmsg_len) - CMSG_LEN(0);
  for (std::size_t attribute = 0, taken = 0; attribute < kFanAttributes; ++attribute) {
    if (fan.record.found[attribute] == kNoValue || taken + sizeof(int) > size) continue;
    std::memcpy(&fan.attributes[attribute], next + taken, sizeof(int));
    taken += sizeof(int);
  }
}

/// Waits for a record.
/// @return whether one came; otherwise the sender is gone
bool Receive(int socket, KeptFan& fan) {
  alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(FanDescriptors))];
  iovec data{.iov_base = &fan.record, .iov_len = sizeof fan.record};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t size = 0;
  do {
    size = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  } while (size < 0 && errno == EINTR);
  if (size != static_cast<ssize_t>(sizeof fan.record)) return false;
  TakeDescriptors(message, fan);
  return true;
}

void WriteBack(const KeptFan& fan, FanAttribute attribute) {
  if (fan.attributes[attribute] >= 0) WriteNumber(fan.attributes[attribute], fan.record.found[attribute]);
}

/// Writes back what was found. A chip that is gone has nothing to be handed back: its writes fail.
void HandBack(const KeptFan& fan) {
  const int mode = fan.attributes[kFanMode];
  if (fan.record.changesControl != 0 && mode >= 0) WriteNumber(mode, kManualMode);
  if (fan.record.changesFrequency != 0) WriteBack(fan, kFanFrequency);
  if (fan.record.changesControl == 0) return;
  WriteBack(fan, kFanControl);
  if (mode < 0 || fan.record.found[kFanMode] == kManualMode) return;
  // For some drivers a target is also the order to keep it, hence after the value, and before the mode, which decides.
  if (fan.record.found[kFanTarget] > 0) WriteBack(fan, kFanTarget);
  WriteBack(fan, kFanMode);
}

}  // namespace

void RunFanGuard(int socket, int lock) {
  setsid();
  CloseAllBut(socket, lock);
  [[maybe_unused]] const int moved = chdir("/");  // no mount stays busy for the guard
  prctl(PR_SET_NAME, "fan-guard");                // whoever sees the name sees a guard that keeps nothing else busy
  KeptFans kept{};
  KeptFan fan{};
  while (Receive(socket, fan)) Keep(kept, fan);
  // Backwards: where two fans share an output, what was found first is what remains.
  while (kept.count > 0) HandBack(kept.fans[--kept.count]);
  _exit(0);
}

}  // namespace hwapi::ddal
