#include "FanNote.h"

#include "Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <string_view>

namespace hwapi::ddal {
namespace {

constexpr std::size_t kMaxNote = 1024;  // bytes
constexpr i32 kMaxControl = 255;
constexpr i32 kMaxMode = 99;

std::string PathOf(u32 fan) { return board::RunDirectory() + '/' + NameOfNote(fan).data(); }

/// FNV-1a: finds what was cut or damaged, not what somebody forged.
u32 SumOf(std::string_view text) {
  u32 sum = 2166136261U;
  for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
  return sum;
}

/// The only spelling of a note.
std::string Text(const FanNote& note) {
  const FanRecord& r = note.record;
  char numbers[160];
  std::snprintf(numbers, sizeof numbers,
                "fan %" PRIu32 "\nturn %" PRIu32 "\nchanges %" PRIu32 " %" PRIu32 "\nfound %" PRId32 " %" PRId32
                " %" PRId32 " %" PRId32 "\n",
                r.fan, r.turn, r.changesControl, r.changesFrequency, r.found[kFanControl], r.found[kFanMode],
                r.found[kFanFrequency], r.found[kFanTarget]);
  std::string text = std::string(numbers) + "chip " + note.chip + "\nat " + note.at + "\nspeed " + note.fan +
                     "\ncontrol " + note.pwm + '\n';
  char sum[24];
  std::snprintf(sum, sizeof sum, "sum %08" PRIx32 "\n", SumOf(text));
  return text + sum;
}

bool IsPlausible(const FanRecord& r) {
  const auto within = [](i32 value, i32 max) { return value >= kNoValue && value <= max; };
  return r.fan < kMaxFans && r.changesControl <= 1 && r.changesFrequency <= 1 &&
         within(r.found[kFanControl], kMaxControl) && within(r.found[kFanMode], kMaxMode) &&
         within(r.found[kFanFrequency], INT32_MAX) && within(r.found[kFanTarget], INT32_MAX);
}

/// @return what follows a key in its line
std::string Value(const std::string& text, std::string_view key) {
  const std::size_t begin = text.find(std::string("\n").append(key).append(" "));
  if (begin == text.npos) return {};
  const std::size_t value = begin + key.size() + 2;
  return text.substr(value, text.find('\n', value) - value);
}

/// Takes a note apart. What is put together again as it was is whole.
std::optional<FanNote> Parse(const std::string& text) {
  FanNote note;
  FanRecord& r = note.record;
  const int read = std::sscanf(text.c_str(),
                               "fan %" SCNu32 "\nturn %" SCNu32 "\nchanges %" SCNu32 " %" SCNu32 "\nfound %" SCNd32
                               " %" SCNd32 " %" SCNd32 " %" SCNd32,
                               &r.fan, &r.turn, &r.changesControl, &r.changesFrequency, &r.found[kFanControl],
                               &r.found[kFanMode], &r.found[kFanFrequency], &r.found[kFanTarget]);
  note.chip = Value(text, "chip");
  note.at = Value(text, "at");
  note.fan = Value(text, "speed");
  note.pwm = Value(text, "control");
  if (read != 8 || !IsPlausible(r) || Text(note) != text) return std::nullopt;
  return note;
}

}  // namespace

NoteName NameOfNote(u32 fan) {
  NoteName name{};
  char* end = std::copy_n("fan", 3, name.data());
  if (fan >= 10) *end++ = static_cast<char>('0' + fan / 10 % 10);
  *end++ = static_cast<char>('0' + fan % 10);
  std::copy_n(".found", 6, end);
  return name;
}

int WriteNote(const FanNote& note) {
  const std::string path = PathOf(note.record.fan);
  const std::string draft = path + ".new";
  const std::string text = Text(note);
  unlink(draft.c_str());  // of a process that was killed while it wrote; only who has the fans' lock comes here
  const Descriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0640));
  if (!file.Open()) return errno;
  const ssize_t written = write(file.Get(), text.data(), text.size());
  if (written == static_cast<ssize_t>(text.size()) && rename(draft.c_str(), path.c_str()) == 0) return 0;
  const int error = written >= 0 && written != static_cast<ssize_t>(text.size()) ? ENOSPC : errno;
  unlink(draft.c_str());
  return error;
}

std::optional<FanNote> ReadNote(u32 fan) {
  const Descriptor file(open(PathOf(fan).c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file.Open() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (status.st_uid != 0 && status.st_uid != geteuid()) return std::nullopt;
  std::string text(kMaxNote, '\0');
  const ssize_t size = read(file.Get(), text.data(), text.size());
  if (size <= 0) return std::nullopt;
  text.resize(static_cast<std::size_t>(size));
  std::optional<FanNote> note = Parse(text);
  return note && note->record.fan == fan ? note : std::nullopt;
}

bool HasNote(u32 fan) {
  struct stat status {};
  return lstat(PathOf(fan).c_str(), &status) == 0;
}

void RemoveNote(u32 fan) { unlink(PathOf(fan).c_str()); }

}  // namespace hwapi::ddal
