#include "HwapiUnit.h"

#include "Internal.h"
#include "MessageQueues.h"
#include "fake/Board.h"

#include <cstdio>

namespace fake {

UnitData& Unit() {
  static auto& unit = *new UnitData;
  return unit;
}

void internal::ResetBoard() {
  Board() = BoardData();
  Unit() = UnitData();
}

}  // namespace fake

using namespace fake;
using namespace fake::internal;

namespace {

u32 AnswerText(const char* function, const std::string& text, char* buffer, u32 size) {
  const Lock lock;
  if (const auto failure = Record({function, size})) return static_cast<u32>(*failure);
  if (buffer == nullptr || size == 0) return 0;
  std::snprintf(buffer, size, "%s", text.c_str());
  if (Unit().unterminated && text.size() >= size) buffer[size - 1] = text[size - 1];
  return 1;
}

}  // namespace

extern "C" {

EUnitType ApiGetLocalUnitType(void) {
  const Lock lock;
  return Record({"ApiGetLocalUnitType"}) ? EUnitType_Unknown : Unit().type;
}

EUnitVersion ApiGetLocalUnitVersion(void) {
  const Lock lock;
  return Record({"ApiGetLocalUnitVersion"}) ? EUnitVersion_Unallocated : Unit().version;
}

u32 ApiGetModuleProductionCode(char* buffer, u32 size) {
  return AnswerText("ApiGetModuleProductionCode", Unit().productionCode, buffer, size);
}

u32 ApiGetModuleSerialNumber(char* buffer, u32 size) {
  return AnswerText("ApiGetModuleSerialNumber", Unit().serialNumber, buffer, size);
}

void* hwapiMsgQueueReceiveSelective(u32 timeoutUs, const u16* filter) {
  Call call("hwapiMsgQueueReceiveSelective", timeoutUs);
  for (u32 i = 1; filter != nullptr && i <= filter[0]; ++i) call.arguments.emplace_back(filter[i]);
  if (Record(std::move(call))) return nullptr;
  return Receive(timeoutUs, filter, WaitingRuns::Nothing);
}

}  // extern "C"
