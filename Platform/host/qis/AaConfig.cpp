// Public tags, debug-configuration values, and memory that the platform hands out.
#include "AaConfig.h"

#include "AaSysLog.h"
#include "BoardDescription.h"
#include "ComLog.h"
#include "EndpointTags.h"
#include "Export.h"
#include "TagFile.h"
#include "TagObserver.h"

#include <climits>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

using hwapi::qis::kPlatformFeature;

namespace {

/// @return 0, else an errno value: names are file names
int CheckName(const char* name) {
  if (name == nullptr) {
    return EINVAL;
  }
  const std::string_view text(name);
  if (text.empty() || text == "." || text == ".." || text.find('/') != std::string_view::npos) {
    return EINVAL;
  }
  return text.size() > NAME_MAX ? ENAMETOOLONG : 0;
}

/// An endpoint that another process serves by now is announced by that one.
bool IsAnothers(const std::string& name) {
  const bool isAnothers = hwapi::qis::AnnouncesAnothersEndpoint(name);
  if (isAnothers) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, kPlatformFeature,
                   "Tag %s is left as it is: another process serves that endpoint now", name.c_str());
  }
  return isAnothers;
}

std::optional<std::string> DescribedValue(const std::string& name) {
  const auto& tags = hwapi::board::OwnBoard().tags;
  const auto found = tags.find(name);
  return found != tags.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::string> ValueOf(const char* name) {
  if (auto newest = hwapi::qis::NewestOfTag(name)) {
    return std::move(newest->value);
  }
  return DescribedValue(name);
}

}  // namespace

QIS_EXPORT i32 AaConfigTagPublicSet(const char* name, const void* value, u32 size) try {
  if (const int error = CheckName(name); error != 0) {
    return error;
  }
  if (size > AACONFIG_TAG_MAX_SIZE || (value == nullptr && size != 0)) {
    return EINVAL;
  }
  return hwapi::qis::AppendToTag(name, size != 0 ? std::string(static_cast<const char*>(value), size) : "",
                                 &IsAnothers);
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT i32 AaConfigTagRegister(const char* name, TAaConfigTagObserver observer) try {
  if (const int error = CheckName(name); error != 0) {
    return error;
  }
  return observer != nullptr ? hwapi::qis::TagObservers::Own()->Add(name, observer, DescribedValue(name)) : EINVAL;
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT i32 AaConfigTagGet(const char* name, void** value) try {
  const int error = CheckName(name);
  if (error != 0 || value == nullptr) {
    return error != 0 ? error : EINVAL;
  }
  *value = nullptr;
  const std::optional<std::string> found = ValueOf(name);
  if (!found) {
    return ENOENT;
  }
  *value = std::malloc(found->size() + 1);
  if (*value == nullptr) {
    return ENOMEM;
  }
  std::memcpy(*value, found->c_str(), found->size() + 1);
  return 0;
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT i32 AaConfigTagGetU32(const char* name, u32* value) try {
  const int error = CheckName(name);
  if (error != 0 || value == nullptr) {
    return error != 0 ? error : EINVAL;
  }
  const std::optional<std::string> found = ValueOf(name);
  if (!found || found->size() != sizeof *value) {
    return found ? EINVAL : ENOENT;
  }
  std::memcpy(value, found->data(), sizeof *value);
  return 0;
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT u32 AaConfigRadGetValue(u32 id) {
  const auto& values = hwapi::board::OwnBoard().rad;
  const auto found = values.find(id);
  return found != values.end() ? found->second : 0;
}

QIS_EXPORT void AaMemUnRefDbg(void* memory, const char*, u32) { std::free(memory); }
