#include "HwapiUnit.h"

#include "AaSysCom.h"
#include "BoardDescription.h"
#include "Contract.h"

#include <cstdio>
#include <string>

using hwapi::board::OwnBoard;

namespace {

u32 Give(const std::string& text, char* buffer, u32 size) {
  if (buffer == nullptr || size == 0 || text.empty()) return 0;
  std::snprintf(buffer, size, "%s", text.c_str());
  return 1;
}

}  // namespace

NUB_API EUnitType ApiGetLocalUnitType() { return OwnBoard().unit.type; }

NUB_API EUnitVersion ApiGetLocalUnitVersion() { return OwnBoard().unit.version; }

NUB_API u32 ApiGetModuleProductionCode(char* buffer, u32 size) {
  return Give(OwnBoard().unit.productCode, buffer, size);
}

NUB_API u32 ApiGetModuleSerialNumber(char* buffer, u32 size) {
  return Give(OwnBoard().unit.serialNumber, buffer, size);
}

NUB_API void* hwapiMsgQueueReceiveSelective(u32 timeoutUs, const u16* filter) {
  return AaSysComMsgReceive(timeoutUs, filter);
}
