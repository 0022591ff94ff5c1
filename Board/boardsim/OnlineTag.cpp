#include "OnlineTag.h"

#include "AaConfig.h"

namespace boardsim {

void SetOnlineTag(u32 task, EStatus status) {
  const u32 value = status;
  AaConfigTagPublicSet(OnlineTagName(task).c_str(), &value, sizeof value);
}

std::string OnlineTagText(u32 task) {
  u32 value = 0;
  if (AaConfigTagGetU32(OnlineTagName(task).c_str(), &value) != 0) return "never seen";
  if (value == EStatus_Initialized) return "online";
  return value == EStatus_NotInitialized ? "gone" : "tag holds " + std::to_string(value);
}

}  // namespace boardsim
