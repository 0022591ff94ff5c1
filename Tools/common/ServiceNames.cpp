#include "ServiceNames.h"

#include <cstdio>

namespace commandline {

std::string OnlineTagName(u32 task) {
  char name[40];
  std::snprintf(name, sizeof name, "app.hwapi.online.%x", task);
  return name;
}

}  // namespace commandline
