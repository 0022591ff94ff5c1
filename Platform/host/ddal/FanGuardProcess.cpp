#include "FanGuardProcess.h"

#include "FanNote.h"
#include "Sysfs.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <ctime>

namespace hwapi::ddal {
namespace {

constexpr int kHelpersSeconds = 1;  // less than the process waits for its guard

/// A fan to hand back.
struct KeptFan {
  FanRecord record;
  FanDescriptors attributes;
};

/// The fans in the order in which they were first changed.
struct KeptFans {
  KeptFan fans[kMaxFans];
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
  if (kept.count < kMaxFans) kept.fans[kept.count++] = fan;
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

/// Hands back the fans of one chip, and takes them off the record.
void HandChipBack(const KeptFans& kept, u32 chip) {
  // Backwards: where two fans share an output, what was found first is what remains.
  for (std::size_t i = kept.count; i-- > 0;) {
    const KeptFan& fan = kept.fans[i];
    if (fan.record.chip != chip) continue;
    const bool taken = HandBack(fan.record, [&fan](FanAttribute attribute, i32 value) {
      const int fd = fan.attributes[attribute];
      return fd >= 0 ? WriteNumberHere(fd, value) : 0;
    });
    if (taken) unlink(NameOfNote(fan.record.fan).data());
  }
}

/// The processes that hand back a chip each.
struct Helpers {
  pid_t pids[kMaxFans];
  std::size_t count;
};

/// Has a chip handed back by a process of its own: nobody can end a thread that the kernel holds in a driver. It lets
/// go of socket and lock, so that a chip that hangs keeps neither.
void StartHelper(Helpers& helpers, const KeptFans& kept, u32 chip, int socket, int lock) {
  const pid_t pid = _Fork();
  if (pid < 0) return HandChipBack(kept, chip);
  if (pid > 0) {
    helpers.pids[helpers.count++] = pid;
    return;
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  close(socket);
  close(lock);
  HandChipBack(kept, chip);
  _exit(0);
}

/// Waits until all have ended, but not for ever.
void AwaitHelpers(Helpers& helpers) {
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGCHLD);
  timespec deadline{};
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += kHelpersSeconds;
  for (;;) {
    std::size_t left = 0;
    for (std::size_t i = 0; i < helpers.count; ++i) {
      if (waitpid(helpers.pids[i], nullptr, WNOHANG) == 0) helpers.pids[left++] = helpers.pids[i];
    }
    helpers.count = left;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (left == 0 || now.tv_sec > deadline.tv_sec || (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec))
      break;
    constexpr timespec kPart{.tv_sec = 0, .tv_nsec = 50'000'000};  // of a signal that is merged into another one
    sigtimedwait(&ends, nullptr, &kPart);
  }
  for (std::size_t i = 0; i < helpers.count; ++i) kill(helpers.pids[i], SIGKILL);
}

void HandAllBack(const KeptFans& kept, int socket, int lock) {
  Helpers helpers{};
  for (std::size_t i = 0; i < kept.count; ++i) {
    const u32 chip = kept.fans[i].record.chip;
    bool first = true;
    for (std::size_t before = 0; before < i; ++before) first = first && kept.fans[before].record.chip != chip;
    if (first) StartHelper(helpers, kept, chip, socket, lock);
  }
  AwaitHelpers(helpers);
}

}  // namespace

void RunFanGuard(int socket, int lock, const char* run) {
  setsid();
  CloseAllBut(socket, lock);
  // Where the notes are; the lock keeps that mount busy anyway.
  [[maybe_unused]] const int moved = chdir(run);
  prctl(PR_SET_NAME, "fan-guard");  // whoever sees the name sees a guard that keeps nothing else busy
  static KeptFans kept;
  KeptFan fan{};
  while (Receive(socket, fan)) Keep(kept, fan);
  HandAllBack(kept, socket, lock);
  _exit(0);
}

}  // namespace hwapi::ddal
