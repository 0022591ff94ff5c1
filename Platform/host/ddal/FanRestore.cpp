#include "FanRestore.h"

#include "Attribute.h"
#include "BoardDescription.h"
#include "FanNote.h"
#include "FileKind.h"
#include "Hwmon.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

namespace hwapi::ddal {
namespace {

constexpr std::chrono::milliseconds kLockPoll{10};

/// @return the description's fan of a note; null when it has none
const board::HwmonFan* DescribedFan(const FanNote& note) {
  for (const board::Fan& fan : board::OwnBoard().fans) {
    const auto* hwmon = std::get_if<board::HwmonFan>(&fan.source);
    if (hwmon != nullptr && note.Describes(*hwmon)) return hwmon;
  }
  return nullptr;
}

std::string NameOf(const FanNote& note) {
  return "fan " + std::to_string(note.record.fan) + " (" + note.pwm + " of chip \"" + note.chip + '"' +
         (note.at.empty() ? "" : " at " + note.at) + ')';
}

/// @return "" when the fan is as it was found; otherwise why not
std::string RestoreFan(const FanNote& note) {
  const board::HwmonFan* described = DescribedFan(note);
  if (described == nullptr) return "the board description has no such fan";
  board::HwmonFan binding = *described;
  binding.at = note.at;
  FoundFan found = OpenFan(binding, false);
  if (found.gone) return {};  // what comes back starts as its driver has it
  if (found.absent) return "its chip is not found, and may be there all the same";
  if (!found.pwm.Open()) return "it cannot be opened for writing";
  const std::array attributes = {&found.pwm, &found.mode, &found.frequency, &found.target};
  DeviceThread& thread = ThreadOfChip(described->chip, described->at);
  int failure = 0;
  const bool taken = HandBack(note.record, [&](FanAttribute attribute, i32 value) {
    if (failure == ETIME || failure == EALREADY) return failure;
    // What was found of the fan had this attribute: one that cannot be opened now keeps what is on record.
    const int fd = attributes[attribute]->Get();
    const int error = fd < 0 ? EBADF : WriteNumber(thread, fd, DeviceThread::Duration(described->deadlineMs), value);
    if (error != 0) failure = error;
    return error;
  });
  if (failure == ETIME) {
    for (Descriptor* late : attributes) late->Release();  // the chip's thread may still use one
  }
  return taken ? std::string() : failure == ETIME ? LateText(*described) : std::strerror(failure);
}

/// @return fans on record, those last that were changed first: where two share an output, what was found first remains
std::vector<FanNote> Notes(const FanReport& report) {
  std::vector<FanNote> notes;
  for (u32 fan = 0; fan < kMaxFans; ++fan) {
    if (!HasNote(fan)) continue;
    if (auto note = ReadNote(fan)) {
      notes.push_back(std::move(*note));
    } else {
      report(std::string(NameOfNote(fan).data()) + " is damaged or not ours, and removed");
      RemoveNote(fan);
    }
  }
  std::sort(notes.begin(), notes.end(), [](auto& a, auto& b) { return a.record.turn > b.record.turn; });
  return notes;
}

}  // namespace

Descriptor LockFans(std::chrono::milliseconds patience, std::string* why) {
  const std::string path = board::RunDirectory() + "/fans.lock";
  mkdir(board::RunDirectory().c_str(), 0755);
  Descriptor lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY, 0660));
  struct stat file {};
  if (!lock.Open() || fstat(lock.Get(), &file) != 0) {
    *why = std::strerror(errno);
    return Descriptor();
  }
  if (!S_ISREG(file.st_mode)) {
    *why = "it is " + board::KindOfFile(file.st_mode);
    return Descriptor();
  }
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    *why = errno != EWOULDBLOCK ? std::strerror(errno) : "";
    if (!why->empty() || std::chrono::steady_clock::now() >= deadline) return Descriptor();
    std::this_thread::sleep_for(kLockPoll);
  }
  return lock;
}

unsigned RestoreFans(const FanReport& report) {
  unsigned left = 0;
  for (const FanNote& note : Notes(report)) {
    const std::string why = RestoreFan(note);
    if (why.empty()) {
      report(NameOf(note) + " is handed back as it was found");
      RemoveNote(note.record.fan);
    } else {
      report(NameOf(note) + " is not handed back: " + why);
      ++left;
    }
  }
  return left;
}

unsigned RestoreFansIfFree(const FanReport& report) {
  bool any = false;
  for (u32 fan = 0; fan < kMaxFans; ++fan) any = any || HasNote(fan);
  if (!any) return 0;
  std::string why;
  const Descriptor lock = LockFans({}, &why);
  if (lock.Open()) return RestoreFans(report);
  if (!why.empty()) report(board::RunDirectory() + "/fans.lock cannot be used: " + why);
  return why.empty() ? 0 : 1;
}

}  // namespace hwapi::ddal
