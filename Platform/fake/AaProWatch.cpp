#include "AaProWatch.h"

#include "Internal.h"

#include <string_view>

namespace {

/// Rests that the calling thread is in.
thread_local unsigned t_rests = 0;

}  // namespace

using namespace fake::internal;

extern "C" {

void AaProRestBegin(void) {
  const Lock lock;
  Record({"AaProRestBegin"});
  ++t_rests;
}

void AaProRestEnd(void) {
  const Lock lock;
  Record({"AaProRestEnd"});
  if (t_rests == 0) return AddViolation("AaProRestEnd without an AaProRestBegin");
  --t_rests;
}

// Threads only run as long as a test lets them; one that hangs is a failure that the test asks for.
TBoolean AaProAllAlive(char* name, u32 size) {
  const Lock lock;
  const bool allAlive = !Record({"AaProAllAlive", size});
  if (name != nullptr && size != 0) {
    const std::string_view hanging = allAlive ? "" : "hanging";
    name[hanging.copy(name, size - 1)] = '\0';
  }
  return allAlive ? GLO_TRUE : GLO_FALSE;
}

}  // extern "C"
