// Troubleshooting files.
#include "AaTrbl.h"

#include "Export.h"
#include "TrblRegistry.h"

using hwapi::qis::TrblRegistry;

QIS_EXPORT i32 AaTrblFileRegister(const char* name, const char* path, EAaTrblFilePriority priority, u32,
                                  int (*prepare)(const char*, const void*), int (*store)(const char*, const void*),
                                  void (*remove)(const char*, const void*), const void* context) {
  if (name == nullptr || *name == '\0' || path == nullptr || *path == '\0') {
    return EAaTrblRet_Failed;
  }
  const bool added = TrblRegistry::Own().Add({.name = name,
                                              .path = path,
                                              .priority = priority,
                                              .prepare = prepare,
                                              .store = store,
                                              .remove = remove,
                                              .context = context});
  return added ? EAaTrblRet_Ok : EAaTrblRet_Failed;
}

QIS_EXPORT i32 AaTrblFileUnregister(const char* name) {
  return name != nullptr && TrblRegistry::Own().Remove(name) ? EAaTrblRet_Ok : EAaTrblRet_Failed;
}
