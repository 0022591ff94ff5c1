#include "TagFile.h"

#include "LockedFile.h"
#include "SharedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>

#include <array>
#include <cerrno>

namespace hwapi::qis {
namespace {

/// The state as the file has it: the number and its complement.
using StoredState = std::array<std::uint64_t, 2>;

StoredState Pack(TagState state) {
  const std::uint64_t number = std::uint64_t{state.newest} << 32 | state.end;
  return {number, ~number};
}

/// Logs that were replaced, for readers that are not at their end.
const RunFolder& OldFolder() {
  static const auto* const folder = new RunFolder("tags.old");
  return *folder;
}

/// Logs that are being made.
const RunFolder& NewFolder() {
  static const auto* const folder = new RunFolder("tags.new");
  return *folder;
}

/// @return whether a log can have this state: what is within bounds does not overflow either
bool IsPossible(TagState state, int file) {
  constexpr u32 kFirst = TagState{}.end;
  struct stat status {};
  return state.end >= kFirst && state.end <= kMaxTagLog && ::fstat(file, &status) == 0 &&
         off_t{state.end} <= status.st_size &&
         (state.newest == 0 || (state.newest >= kFirst && state.newest < state.end));
}

int ErrnoOr(int fallback) { return errno != 0 ? errno : fallback; }

/// Appends behind the end, then moves the end: a set counts wholly or not at all.
int Append(int file, TagState state, const TagRecord& record) {
  std::array<u32, 2> head{static_cast<u32>(record.value.size()), record.sequence};
  const std::array<iovec, 2> parts{
      {{.iov_base = head.data(), .iov_len = sizeof head},
       {.iov_base = const_cast<char*>(record.value.data()), .iov_len = record.value.size()}}};
  errno = 0;
  if (::pwritev(file, parts.data(), parts.size(), off_t{state.end}) != static_cast<ssize_t>(record.LogSize())) {
    return ErrnoOr(ENOSPC);
  }
  const StoredState stored = Pack({.end = state.end + record.LogSize(), .newest = state.end});
  return ::pwrite(file, stored.data(), sizeof stored, 0) == sizeof stored ? 0 : ErrnoOr(ENOSPC);
}

struct flock WholeFile(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

/// @return whether a reader still needs the log before the present one
bool IsPreviousRead(int current, const std::string& name) {
  const Fd previous = OpenSharedFile(OldFolder().Get(), name.c_str(), O_RDWR);
  if (!previous || HasName(OldFolder().Get(), name.c_str(), current)) {
    return false;
  }
  struct flock readers = WholeFile(F_WRLCK);
  return ::fcntl(previous.Get(), F_OFD_GETLK, &readers) == 0 && readers.l_type != F_UNLCK;
}

/// Replaces the log by one that has only this record.
int Replace(const std::string& name, const TagRecord& record) {
  const char* const file = name.c_str();
  const Fd fresh = OpenSharedFile(NewFolder().Get(), file, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (!fresh || ::fchmod(fresh.Get(), TagFolder().FileMode()) != 0) {
    return errno;
  }
  if (const int error = Append(fresh.Get(), TagState{}, record); error != 0) {
    return error;
  }
  ::unlinkat(OldFolder().Get(), file, 0);
  if (::linkat(TagFolder().Get(), file, OldFolder().Get(), file, 0) != 0 ||
      ::renameat(NewFolder().Get(), file, TagFolder().Get(), file) != 0) {
    const int error = errno;
    ReportIfNot(S_IFREG, OldFolder().Get(), file);
    return error;
  }
  return 0;
}

}  // namespace

const RunFolder& TagFolder() {
  static const auto* const folder = new RunFolder("tags");
  return *folder;
}

TagState ReadTagState(int file) {
  constexpr int kMostAttempts = 10'000;  // far more than a write of 16 bytes takes
  StoredState stored{};
  for (int i = 0; i < kMostAttempts; ++i) {
    if (::pread(file, stored.data(), sizeof stored, 0) != sizeof stored) {
      return {};  // not set yet
    }
    if (stored[0] == ~stored[1]) {
      const TagState state{.end = static_cast<u32>(stored[0]), .newest = static_cast<u32>(stored[0] >> 32)};
      return IsPossible(state, file) ? state : TagState{};
    }
  }
  return {};
}

std::optional<TagRecord> ReadTagRecord(int file, u32 offset) {
  std::array<u32, 2> head{};
  if (::pread(file, head.data(), sizeof head, off_t{offset}) != sizeof head || head[0] > AACONFIG_TAG_MAX_SIZE) {
    return std::nullopt;
  }
  TagRecord record{.sequence = head[1], .value = std::string(head[0], '\0')};
  const ssize_t size = ::pread(file, record.value.data(), record.value.size(), off_t{offset} + off_t{sizeof head});
  return size == static_cast<ssize_t>(record.value.size()) ? std::optional(std::move(record)) : std::nullopt;
}

int AppendToTag(const std::string& name, const std::string& value, bool (*mayNot)(const std::string& name)) {
  if (TagFolder().Get() < 0) {
    return TagFolder().Error();
  }
  const Fd file = OpenLocked(TagFolder().Get(), name.c_str(), TagFolder().FileMode(), LockWait::Wait);
  if (!file) {
    return errno;
  }
  if (mayNot(name)) {
    return 0;
  }
  const TagState state = ReadTagState(file.Get());
  const auto newest = state.newest != 0 ? ReadTagRecord(file.Get(), state.newest) : std::nullopt;
  const TagRecord record{.sequence = newest ? newest->sequence + 1 : 1, .value = value};
  const bool isFull = state.end + record.LogSize() > kMaxTagLog;
  if (isFull || (state.end >= kLongTagLog && !IsPreviousRead(file.Get(), name))) {
    if (Replace(name, record) == 0) {
      return 0;
    }
  }
  return isFull ? EFBIG : Append(file.Get(), state, record);
}

std::optional<TagRecord> NewestOfTag(const std::string& name) {
  const Fd file = OpenSharedFile(TagFolder().Get(), name.c_str(), O_RDONLY);
  const TagState state = file ? ReadTagState(file.Get()) : TagState{};
  return state.newest != 0 ? ReadTagRecord(file.Get(), state.newest) : std::nullopt;
}

void HoldTagLog(int file) {
  struct flock reader = WholeFile(F_RDLCK);
  ::fcntl(file, F_OFD_SETLK, &reader);
}

}  // namespace hwapi::qis
