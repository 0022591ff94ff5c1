#include "ddal_error.h"

#include "Internal.h"
#include "fake/Board.h"

#include <cstdio>

using namespace fake;
using namespace fake::internal;

extern "C" {

int ddal_init(char* problem, u32 size) {
  const Lock lock;
  if (const auto failure = Record({"ddal_init", size})) return *failure;
  if (problem != nullptr && size != 0) std::snprintf(problem, size, "%s", Board().initProblem.c_str());
  return Board().initProblem.empty() ? DDAL_OK : DDAL_ERR_CONFIG;
}

char* ddal_strerror(int code, char* buffer, u32 size) {
  Record({"ddal_strerror", code, size});
  if (buffer != nullptr && size != 0) std::snprintf(buffer, size, "driver error %d", code);
  return buffer;
}

}  // extern "C"
