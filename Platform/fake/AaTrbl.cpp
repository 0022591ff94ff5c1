#include "AaTrbl.h"

#include "Internal.h"
#include "fake/Trbl.h"

#include <algorithm>
#include <stdexcept>

namespace fake {
namespace {

using namespace internal;

std::vector<TrblFile>& TheRegistry() {
  static auto& registry = *new std::vector<TrblFile>;
  return registry;
}

}  // namespace

std::vector<TrblFile> TrblFiles() {
  const Lock lock;
  return TheRegistry();
}

int PrepareTrblFile(const std::string& name) {
  for (const TrblFile& file : TrblFiles()) {
    if (file.name == name) return file.prepare(file.name.c_str(), file.context);
  }
  throw std::invalid_argument("no troubleshooting file is registered as " + name);
}

void internal::ResetTrbl() { TheRegistry().clear(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

i32 AaTrblFileRegister(const char* name, const char* path, EAaTrblFilePriority priority, u32 flags,
                       int (*prepare)(const char*, const void*), int (*store)(const char*, const void*),
                       void (*remove)(const char*, const void*), const void* context) {
  const Lock lock;
  if (const auto failure = Record({"AaTrblFileRegister", name, path, priority, flags})) return *failure;
  if (name == nullptr || path == nullptr) return EAaTrblRet_Failed;
  auto& registry = TheRegistry();
  if (std::ranges::find(registry, name, &TrblFile::name) != registry.end()) return EAaTrblRet_Failed;
  registry.push_back({name, path, priority, flags, prepare, store, remove, context});
  return EAaTrblRet_Ok;
}

i32 AaTrblFileUnregister(const char* name) {
  const Lock lock;
  if (const auto failure = Record({"AaTrblFileUnregister", name})) return *failure;
  const auto taken = std::erase_if(TheRegistry(), [&](const TrblFile& file) { return name && file.name == name; });
  return taken != 0 ? EAaTrblRet_Ok : EAaTrblRet_Failed;
}

}  // extern "C"
