#include "ddal_fan.h"

#include "Internal.h"
#include "fake/Hardware.h"

#include <map>

namespace fake {
namespace {

using namespace internal;

constexpr u32 kFullSpeed = 100;

std::map<ddal_fan_id_t, Fan>& TheFans() {
  static auto& fans = *new std::map<ddal_fan_id_t, Fan>;
  return fans;
}

/// Reads one datum of a fan.
int Get(const char* function, ddal_fan_id_t id, int Fan::*datum, int* value) {
  const Lock lock;
  if (const auto failure = Record({function, id})) return *failure;
  if (value == nullptr) return DDAL_ERR_INVALID;
  const auto fan = TheFans().find(id);
  if (fan == TheFans().end()) return DDAL_ERR_NO_DEVICE;
  const Fan& state = fan->second;
  *value = state.readError == DDAL_OK ? state.*datum : state.garbage.value_or(*value);
  return state.readError;
}

/// Sets one datum of a fan.
int Set(ddal_fan_id_t id, int Fan::*datum, int value) {
  const auto fan = TheFans().find(id);
  if (fan == TheFans().end()) return DDAL_ERR_NO_DEVICE;
  if (fan->second.writeError == DDAL_OK) fan->second.*datum = value;
  return fan->second.writeError;
}

}  // namespace

void SetFan(ddal_fan_id_t fan, const Fan& state) {
  const Lock lock;
  TheFans()[fan] = state;
}

Fan GetFan(ddal_fan_id_t fan) {
  const Lock lock;
  return TheFans().at(fan);
}

void internal::ResetFans() { TheFans().clear(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

int ddal_fan_set_fan_pwm_freq(ddal_fan_id_t fan, int hertz) {
  const Lock lock;
  if (const auto failure = Record({"ddal_fan_set_fan_pwm_freq", fan, hertz})) return *failure;
  if (hertz <= 0) return DDAL_ERR_INVALID;
  return Set(fan, &Fan::hertz, hertz);
}

int ddal_fan_get_fan_pwm_freq(ddal_fan_id_t fan, int* hertz) {
  return Get("ddal_fan_get_fan_pwm_freq", fan, &Fan::hertz, hertz);
}

int ddal_fan_set_pwm(ddal_fan_id_t fan, u32 control) {
  const Lock lock;
  if (const auto failure = Record({"ddal_fan_set_pwm", fan, control})) return *failure;
  if (control > kFullSpeed) return DDAL_ERR_INVALID;
  return Set(fan, &Fan::control, static_cast<int>(control));
}

int ddal_fan_get_pwm(ddal_fan_id_t fan, int* control) { return Get("ddal_fan_get_pwm", fan, &Fan::control, control); }

int ddal_fan_get_rpm(ddal_fan_id_t fan, int* rpm) { return Get("ddal_fan_get_rpm", fan, &Fan::rpm, rpm); }

}  // extern "C"
