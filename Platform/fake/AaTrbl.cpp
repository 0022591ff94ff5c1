#include "AaTrbl.h"

#include "Internal.h"
#include "fake/Files.h"
#include "fake/Trbl.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace fake {
namespace {

using namespace internal;

std::vector<TrblFile>& TheRegistry() {
  static auto& registry = *new std::vector<TrblFile>;
  return registry;
}

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/// @return the content as a real file, at its beginning; null when there is no such file
Stream OpenContent(const std::string& path) {
  const std::optional<std::string> content = FileContent(path);
  if (!content) return nullptr;
  Stream stream(std::tmpfile());
  if (stream == nullptr || std::fwrite(content->data(), 1, content->size(), stream.get()) != content->size() ||
      std::fflush(stream.get()) != 0) {
    return nullptr;
  }
  std::rewind(stream.get());
  return stream;
}

EAaTrblCollect Prepare(const TrblFile& file) {
  const int answer = file.prepare != nullptr ? file.prepare(file.name.c_str(), file.context) : EAaTrblCbStatus_Ok;
  if (answer == EAaTrblCbStatus_Ok) return EAaTrblCollect_Ok;
  return answer == EAaTrblCbStatus_NotReady ? EAaTrblCollect_NotReady : EAaTrblCollect_Failed;
}

void Visit(const TrblFile& file, TAaTrblVisitor visitor, void* context) {
  SAaTrblFile seen{.name = file.name.c_str(),
                   .path = file.path.c_str(),
                   .priority = file.priority,
                   .process = 1,
                   .result = Prepare(file),
                   .error = 0,
                   .content = -1};
  Stream content;
  if (seen.result == EAaTrblCollect_Ok) {
    content = OpenContent(file.path);
    if (content != nullptr) {
      seen.content = fileno(content.get());
    } else {
      seen.result = EAaTrblCollect_NoFile;
      seen.error = ENOENT;
    }
  }
  const bool copied = visitor(&seen, context) != GLO_FALSE;
  if (copied && seen.result == EAaTrblCollect_Ok && file.store != nullptr) file.store(file.name.c_str(), file.context);
}

bool Fits(const char* text, u32 most) {
  return text != nullptr && *text != '\0' && std::string_view(text).size() <= most;
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
  if (!Fits(name, AATRBL_MAX_NAME) || !Fits(path, AATRBL_MAX_PATH)) return EAaTrblRet_Failed;
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

i32 AaTrblCollect(u32 timeoutMs, TAaTrblVisitor visitor, void* context) {
  if (const auto failure = Record({"AaTrblCollect", timeoutMs})) return *failure;
  std::vector<TrblFile> files = TrblFiles();
  if (visitor == nullptr || files.empty()) return EAaTrblRet_Failed;
  std::ranges::stable_sort(files, std::ranges::greater{}, &TrblFile::priority);
  for (const TrblFile& file : files) Visit(file, visitor, context);
  return EAaTrblRet_Ok;
}

}  // extern "C"
