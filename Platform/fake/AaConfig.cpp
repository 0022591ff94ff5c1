#include "AaConfig.h"

#include "Execution.h"
#include "Internal.h"
#include "fake/Config.h"
#include "fake/Log.h"

#include <cerrno>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace fake {
namespace {

using namespace internal;

struct Observer {
  std::string name;
  TAaConfigTagObserver call;
};

struct Notification {
  Observer observer;
  Bytes value;
};

struct Answer {
  i32 result;
  std::optional<std::string> text;
};

struct Config {
  std::map<std::string, Bytes> tags;
  std::map<std::string, Answer> answers;
  std::vector<Observer> observers;
  std::deque<Notification> notifications;
  bool notifying = false;
  std::map<u32, u32> rads;
  std::map<const void*, std::unique_ptr<char[]>> handedOut;
};

Config& TheConfig() {
  static auto& config = *new Config;
  return config;
}

bool IsTagName(const char* name) {
  return name != nullptr && *name != '\0' && std::string_view(name).find('/') == std::string_view::npos;
}

/// Gives the turn of calling observers back, whatever leaves them.
class Turn {
 public:
  Turn() = default;
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    const Lock lock;
    TheConfig().notifying = false;
  }
};

void CallObserver(const Notification& notification) {
  const Observer& observer = notification.observer;
  Bytes terminated = notification.value;
  terminated.push_back(0);
  const EuScope scope(kPlatformEu);
  try {
    observer.call(observer.name.c_str(), terminated.data(), static_cast<u32>(notification.value.size()));
  } catch (const AssertionFailed&) {
    throw;
  } catch (const RunEnded&) {
    throw;
  } catch (const std::exception& problem) {
    LogError("Observer of tag " + observer.name + " threw: " + problem.what());
  } catch (...) {
    LogError("Observer of tag " + observer.name + " threw something that is no std::exception");
  }
}

/// Calls observers until none waits. A set from within an observer waits its turn, so one observer's calls never
/// overlap.
void CallObservers() {
  {
    const Lock lock;
    if (std::exchange(TheConfig().notifying, true)) return;
  }
  const Turn turn;
  while (true) {
    Notification next;
    {
      const Lock lock;
      auto& waiting = TheConfig().notifications;
      if (waiting.empty()) return;
      next = std::move(waiting.front());
      waiting.pop_front();
    }
    CallObserver(next);
  }
}

void StoreTag(const std::string& name, const Bytes& value) {
  Config& config = TheConfig();
  config.tags[name] = value;
  for (const Observer& observer : config.observers) {
    if (observer.name == name) config.notifications.push_back({observer, value});
  }
}

/// @return a zero-terminated copy with one reference
void* HandOut(const void* value, std::size_t size) {
  auto copy = std::make_unique<char[]>(size + 1);
  std::memcpy(copy.get(), value, size);
  void* address = copy.get();
  TheConfig().handedOut.emplace(address, std::move(copy));
  return address;
}

}  // namespace

void SetTag(const std::string& name, const Bytes& value) {
  {
    const Lock lock;
    StoreTag(name, value);
  }
  CallObservers();
}

void SetTag(const std::string& name, const std::string& text) { SetTag(name, Bytes(text.begin(), text.end())); }

void SetTag(const std::string& name, u32 number) { SetTag(name, BytesOf(number)); }

void RemoveTag(const std::string& name) {
  const Lock lock;
  TheConfig().tags.erase(name);
}

std::optional<Bytes> TagValue(const std::string& name) {
  const Lock lock;
  const auto found = TheConfig().tags.find(name);
  return found == TheConfig().tags.end() ? std::nullopt : std::optional(found->second);
}

void AnswerTagGet(const std::string& name, i32 result, std::optional<std::string> text) {
  const Lock lock;
  TheConfig().answers[name] = {result, std::move(text)};
}

void SetRad(u32 id, u32 value) {
  const Lock lock;
  TheConfig().rads[id] = value;
}

std::size_t LiveMemory() {
  const Lock lock;
  return TheConfig().handedOut.size();
}

void internal::ResetConfig() { TheConfig() = Config(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

i32 AaConfigTagPublicSet(const char* name, const void* value, u32 size) {
  {
    const Lock lock;
    const auto* bytes = static_cast<const u8*>(value);
    const Value copy = bytes != nullptr ? Value(Bytes(bytes, bytes + size)) : Value(nullptr);
    if (const auto failure = Record({"AaConfigTagPublicSet", name, copy})) return *failure;
    if (!IsTagName(name) || size > AACONFIG_TAG_MAX_SIZE || (value == nullptr && size != 0)) return EINVAL;
    StoreTag(name, value != nullptr ? copy.Buffer() : Bytes());
  }
  CallObservers();
  return 0;
}

i32 AaConfigTagRegister(const char* name, TAaConfigTagObserver observer) {
  {
    const Lock lock;
    if (const auto failure = Record({"AaConfigTagRegister", name})) return *failure;
    if (!IsTagName(name) || observer == nullptr) return EINVAL;
    Config& config = TheConfig();
    config.observers.push_back({name, observer});
    const auto tag = config.tags.find(name);
    if (tag != config.tags.end()) config.notifications.push_back({config.observers.back(), tag->second});
  }
  CallObservers();
  return 0;
}

i32 AaConfigTagGet(const char* name, void** value) {
  const Lock lock;
  if (const auto failure = Record({"AaConfigTagGet", name})) return *failure;
  if (name == nullptr || value == nullptr) return EINVAL;
  if (const auto answer = TheConfig().answers.find(name); answer != TheConfig().answers.end()) {
    const auto& text = answer->second.text;
    *value = text ? HandOut(text->data(), text->size()) : nullptr;
    return answer->second.result;
  }
  const auto tag = TheConfig().tags.find(name);
  *value = tag != TheConfig().tags.end() ? HandOut(tag->second.data(), tag->second.size()) : nullptr;
  return *value != nullptr ? 0 : ENOENT;
}

i32 AaConfigTagGetU32(const char* name, u32* value) {
  const Lock lock;
  if (const auto failure = Record({"AaConfigTagGetU32", name})) return *failure;
  if (name == nullptr || value == nullptr) return EINVAL;
  const auto tag = TheConfig().tags.find(name);
  if (tag == TheConfig().tags.end()) return ENOENT;
  if (tag->second.size() != sizeof(u32)) return EINVAL;
  std::memcpy(value, tag->second.data(), sizeof(u32));
  return 0;
}

u32 AaConfigRadGetValue(u32 id) {
  const Lock lock;
  if (const auto failure = Record({"AaConfigRadGetValue", id})) return static_cast<u32>(*failure);
  const auto rad = TheConfig().rads.find(id);
  return rad != TheConfig().rads.end() ? rad->second : 0;
}

void AaMemUnRefDbg(void* memory, const char* /*file*/, u32 /*line*/) {
  const Lock lock;
  Record({"AaMemUnRefDbg"});
  if (memory == nullptr || TheConfig().handedOut.erase(memory) != 0) return;
  AddViolation("AaMemUnRefDbg with memory that was released before or that the platform did not hand out");
}

}  // extern "C"
