#include "TagObserver.h"

#include "AaConfig.h"
#include "CommandError.h"
#include "Signals.h"

#include <atomic>
#include <cstring>

namespace clmctl {
namespace {

std::atomic<TAaSysComSicad> tagReceiver{0};

void PassOn(const char* /*name*/, const void* value, u32 size) {
  void* msg = AaSysComMsgCreate(CLMCTL_TAG_IND_MSG, size, tagReceiver.load());
  if (msg == nullptr) return;
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(msg), value, size);
  AaSysComMsgSend(&msg);
}

}  // namespace

void ObserveTag(const std::string& name, TAaSysComSicad receiver) {
  tagReceiver = receiver;
  const i32 error = AaConfigTagRegister(name.c_str(), PassOn);
  if (error == 0) return;
  throw CommandError(ExitCode::Refused, "cannot observe the tag " + name + ": " + std::strerror(error));
}

}  // namespace clmctl
