#include "OnlineWatch.h"

#include "AaConfig.h"
#include "OnlineTag.h"
#include "SimError.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace boardsim {
namespace {

/// What the observers know. Never destroyed: their threads may outlive main.
struct Watch {
  int changed = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  std::vector<u32> tasks;
};

Watch& TheWatch() {
  static auto* watch = new Watch;
  return *watch;
}

void Note(const char* /*name*/, const void* /*value*/, u32 /*size*/) {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(TheWatch().changed, &one, sizeof one);
}

}  // namespace

int WatchOnlineTags(const std::vector<u32>& tasks) {
  TheWatch().tasks = tasks;
  for (const u32 task : tasks) {
    if (AaConfigTagRegister(OnlineTagName(task).c_str(), Note) != 0) {
      throw SimError(ExitCode::Unreachable, "cannot observe the tag " + OnlineTagName(task));
    }
  }
  return TheWatch().changed;
}

std::vector<u32> TasksNotOnline() {
  std::vector<u32> missing;
  for (const u32 task : TheWatch().tasks) {
    u32 value = 0;
    if (AaConfigTagGetU32(OnlineTagName(task).c_str(), &value) != 0 || value != EStatus_Initialized) {
      missing.push_back(task);
    }
  }
  return missing;
}

}  // namespace boardsim
