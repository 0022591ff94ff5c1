#include "ClockFile.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "LockedFile.h"
#include "Replacement.h"
#include "RunFolder.h"

#include <cerrno>
#include <cstring>

namespace hwapi::qis {
namespace {

constexpr const char* kName = "clock";

/// The file's content: the same for every processor.
struct Record {
  ClockState state;
  std::uint64_t check = 0;
};
static_assert(sizeof(Record) == 96, "the file has no gaps");

/// FNV-1a
std::uint64_t CheckOf(const ClockState& state) {
  std::array<unsigned char, sizeof state> bytes;
  std::memcpy(bytes.data(), &state, sizeof state);
  std::uint64_t check = 0xCBF29CE484222325;
  for (const unsigned char byte : bytes) {
    check = (check ^ byte) * 0x100000001B3;
  }
  return check;
}

/// @return 0; EAGAIN when it was read in the middle of a write or is damaged, ENODATA when it is short, else an errno
/// value
int ReadRecord(int file, Record& record) {
  const ssize_t size = Uninterrupted([&] { return ::pread(file, &record, sizeof record, 0); });
  if (size != sizeof record) {
    return size < 0 ? errno : ENODATA;
  }
  return record.check == CheckOf(record.state) ? 0 : EAGAIN;
}

/// As ReadRecord, and waits for a write to end.
int ReadWholeRecord(int file, Record& record) {
  constexpr int kMaxAttempts = 1000;  // far more than a write of a record takes
  int error = EAGAIN;
  for (int i = 0; i < kMaxAttempts && error == EAGAIN; ++i) {
    error = ReadRecord(file, record);
  }
  return error;
}

}  // namespace

ClockFile::ClockFile(const ClockState& fresh) : m_origin(fresh.origin), m_state(fresh) {
  const RunFolder run("");
  m_path = run.Path() + "/" + kName;
  m_file = run.Get() >= 0 ? OpenLocked(run.Get(), kName, run.FileMode(), LockWait::Wait) : Fd();
  int error = m_file ? 0 : errno;
  if (m_file) {
    Record record;
    const bool isThere = ReadWholeRecord(m_file.Get(), record) == 0 && record.state.origin.Fits(m_origin);
    m_state = isThere ? record.state : fresh;
    if (m_origin.boot != BootId{}) {
      m_state.origin.boot = m_origin.boot;  // whoever made the clock may not have known it
    }
    error = isThere && m_state.origin == record.state.origin ? 0 : Write(m_state);
    Unlock(m_file.Get());
  }
  if (error != 0) {
    m_file.Reset();
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "The board's clock in %s cannot be shared (%s): this process keeps its own", run.Path().c_str(),
                   std::strerror(error));
  }
}

ClockState ClockFile::Read() const {
  const std::lock_guard lock(m_mutex);
  if (m_file && !Load()) {
    Restore();
  }
  return m_state;
}

int ClockFile::Change(const std::function<void(ClockState&)>& change) {
  int error = 0;
  {
    const std::lock_guard changing(m_changing);
    error = m_file ? LockInTime(m_file.Get()) : 0;
    if (error == 0) {
      const std::lock_guard lock(m_mutex);
      if (m_file) {
        Load();
      }
      ClockState state = m_state;
      change(state);
      error = m_file ? Write(state) : 0;
      m_state = error == 0 ? state : m_state;
    }
    if (m_file && error != ETIMEDOUT) {
      Unlock(m_file.Get());
    }
  }
  if (error == ETIMEDOUT) {  // without our locks: the time of the line is read here
    ReportKeptLock(m_file.Get(), m_path.c_str());
  }
  return error;
}

/// Takes over what the file has.
/// @return false when it is damaged; that of another board is none of ours, and not damaged
bool ClockFile::Load() const {
  Record record;
  if (const int error = ReadWholeRecord(m_file.Get(), record); error != 0) {
    return false;
  }
  if (record.state.origin.Fits(m_origin)) {
    m_state = record.state;
  }
  return true;
}

/// Puts the last good state back. Whoever holds the lock changes the file anyway, or sets it up.
void ClockFile::Restore() const {
  const std::unique_lock changing(m_changing, std::try_to_lock);
  if (!changing || LockAtOnce(m_file.Get()) != 0) {
    return;
  }
  if (!Load()) {
    Write(m_state);
  }
  Unlock(m_file.Get());
}

int ClockFile::Write(const ClockState& state) const {
  const Record record{.state = state, .check = CheckOf(state)};
  const ssize_t size = Uninterrupted([&] { return ::pwrite(m_file.Get(), &record, sizeof record, 0); });
  if (size == sizeof record) {
    return 0;
  }
  return size < 0 ? errno : ENOSPC;
}

}  // namespace hwapi::qis
