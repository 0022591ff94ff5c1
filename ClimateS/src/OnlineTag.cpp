#include "OnlineTag.h"

#include "AaConfig.h"

#include <cstdio>

namespace ps::hwapi::common::climate {

std::string OnlineTagName(u32 endpoint) {
  char name[40];
  std::snprintf(name, sizeof(name), "app.hwapi.online.%x", endpoint);
  return name;
}

void SetOnlineTag(u32 endpoint, EStatus status) {
  const u32 value = status;
  AaConfigTagPublicSet(OnlineTagName(endpoint).c_str(), &value, sizeof(value));
}

}  // namespace ps::hwapi::common::climate
