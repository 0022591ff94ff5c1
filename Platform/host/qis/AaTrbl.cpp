// Troubleshooting files.
#include "AaTrbl.h"

#include "Export.h"
#include "TrblCollector.h"
#include "TrblRegistry.h"
#include "TrblServer.h"

#include <new>
#include <string_view>

using hwapi::qis::TrblRegistry;

namespace {

bool Fits(const char* text, u32 most) {
  return text != nullptr && *text != '\0' && std::string_view(text).size() <= most;
}

}  // namespace

QIS_EXPORT i32 AaTrblFileRegister(const char* name, const char* path, EAaTrblFilePriority priority, u32,
                                  int (*prepare)(const char*, const void*), int (*store)(const char*, const void*),
                                  void (*remove)(const char*, const void*), const void* context) try {
  if (!Fits(name, AATRBL_MAX_NAME) || !Fits(path, AATRBL_MAX_PATH)) {
    return EAaTrblRet_Failed;
  }
  hwapi::qis::TrblServer::Own().Start();
  const bool added = TrblRegistry::Own().Add({.name = name,
                                              .path = path,
                                              .priority = priority,
                                              .prepare = prepare,
                                              .store = store,
                                              .remove = remove,
                                              .context = context});
  return added ? EAaTrblRet_Ok : EAaTrblRet_Failed;
} catch (const std::bad_alloc&) {
  return EAaTrblRet_Failed;
}

QIS_EXPORT i32 AaTrblFileUnregister(const char* name) try {
  return name != nullptr && TrblRegistry::Own().Remove(name) ? EAaTrblRet_Ok : EAaTrblRet_Failed;
} catch (const std::bad_alloc&) {
  return EAaTrblRet_Failed;
}

QIS_EXPORT i32 AaTrblCollect(u32 timeoutMs, TAaTrblVisitor visitor, void* context) try {
  if (visitor == nullptr) {
    return EAaTrblRet_Failed;
  }
  return hwapi::qis::CollectTrblFiles(std::chrono::milliseconds(timeoutMs), visitor, context);
} catch (const std::bad_alloc&) {
  return EAaTrblRet_Failed;
}
