#include "ResetAnswer.h"

#include "Arguments.h"
#include "BoardDescription.h"
#include "SimError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace boardsim {
namespace {

constexpr std::string_view kFail = "fail=";
constexpr std::string_view kSilent = "silent";
constexpr std::string_view kLate = "late=";

/// Sets how the type is answered.
/// @return whether the text says that
bool SetManner(ResetAnswer& answer, std::string_view text) {
  if (text == kSilent) {
    answer.silent = true;
    return true;
  }
  const bool fail = text.starts_with(kFail);
  if (!fail && !text.starts_with(kLate)) return false;
  const std::optional<u32> number = commandline::NumberFrom(text.substr(text.find('=') + 1));
  if (!number || (fail ? *number == 0 : *number > ResetAnswer::kLongestDelaySeconds)) return false;
  if (fail) {
    answer.status = static_cast<ERP_RAM_status>(*number);
  } else {
    answer.delaySeconds = *number;
  }
  return true;
}

std::optional<ResetAnswer> Parse(std::string_view text, u32 typeBefore) {
  ResetAnswer answer{.type = typeBefore};
  if (SetManner(answer, text)) return answer;
  const std::size_t blank = text.find(' ');
  const std::optional<u32> type = commandline::NumberFrom(text.substr(0, blank));
  if (!type) return std::nullopt;
  answer.type = *type;
  if (blank != std::string_view::npos && !SetManner(answer, text.substr(blank + 1))) return std::nullopt;
  return answer;
}

}  // namespace

ResetAnswer ResetAnswer::FromCommand(std::string_view text, const ResetAnswer& before) {
  if (const auto answer = Parse(text, before.type)) return *answer;
  throw SimError(ExitCode::Usage,
                 "'" + std::string(text) +
                     "' is no reset type: give a number such as 2 (watchdog), fail=STATUS with a status that is not 0, "
                     "silent, or late=SECONDS of board time up to " +
                     std::to_string(kLongestDelaySeconds));
}

std::string ResetAnswer::Line() const {
  std::string line = std::to_string(type);
  if (status != ERP_RAM_status_Success) line += " " + std::string(kFail) + std::to_string(status);
  if (silent) line += " " + std::string(kSilent);
  if (delaySeconds != 0) line += " " + std::string(kLate) + std::to_string(delaySeconds);
  return line;
}

std::optional<ResetAnswer> ResetAnswer::Load(const std::string& file) {
  std::ifstream stream(file);
  std::string line;
  return std::getline(stream, line) ? Parse(line, ERPresetTypePowerOn) : std::nullopt;
}

ResetAnswer ResetAnswer::Current(const std::string& file) {
  if (const auto answer = Load(file)) return *answer;
  return {.type = hwapi::board::OwnBoard().boot.resetType.value_or(ERPresetTypePowerOn)};
}

void ResetAnswer::Save(const std::string& file) const {
  // Renamed into place: the simulator may be reading it.
  const std::string fresh = file + ".new";
  errno = 0;
  std::ofstream stream(fresh);
  stream << Line() << '\n';
  stream.close();
  if (!stream || std::rename(fresh.c_str(), file.c_str()) != 0) {
    throw SimError(ExitCode::Unreachable, "cannot write " + file + ": " + std::strerror(errno != 0 ? errno : EIO));
  }
}

}  // namespace boardsim
