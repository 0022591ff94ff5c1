#include "OnlineTag.h"

#include "AaConfig.h"

#include <cstdio>

namespace ps::hwapi::common::climate {

namespace {

struct Name {
  char text[40];
};

/// Needs no memory: tags are set in a destructor, too.
Name NameOf(u32 endpoint) {
  Name name;
  std::snprintf(name.text, sizeof(name.text), "app.hwapi.online.%x", endpoint);
  return name;
}

}  // namespace

std::string OnlineTagName(u32 endpoint) { return NameOf(endpoint).text; }

void SetOnlineTag(u32 endpoint, EStatus status) {
  const u32 value = status;
  AaConfigTagPublicSet(NameOf(endpoint).text, &value, sizeof(value));
}

}  // namespace ps::hwapi::common::climate
