#include "Boards.h"

#include "Endpoints.h"
#include "fake/Board.h"
#include "fake/Hardware.h"
#include "fake/Messages.h"
#include "fake/Platform.h"

#include <cstddef>
#include <iterator>

namespace fuzz {
namespace {

using ps::hwapi::common::climate::ClimateService;

struct Board {
  EUnitType type;
  EUnitVersion version;
  int backplane;
};

constexpr Board kBoards[] = {
    {.type = EUnitType_Kel, .version = EUnitVersion_Kelf, .backplane = 0},    // three fans
    {.type = EUnitType_Kel, .version = EUnitVersion_Kela, .backplane = 0},    // two
    {.type = EUnitType_Zun, .version = EUnitVersion_Zun, .backplane = 0},     // none
    {.type = EUnitType_Kel, .version = EUnitVersion_Kelc, .backplane = 1},    // three, in the smaller cabinet
    {.type = EUnitType_Vyd, .version = EUnitVersion_Vyda, .backplane = 0},    // three, without a black box
    {.type = EUnitType_Kel, .version = EUnitVersion_Kele, .backplane = 0},    // none, without a black box
    {.type = EUnitType_Pivo, .version = EUnitVersion_Pivoa, .backplane = 0},  // two, with a power supply to feed
    {.type = EUnitType_Kel, .version = EUnitVersion{99}, .backplane = 0},     // unknown to the tables
};

/// Frequencies that fans turn with: those that have a code, and others.
constexpr int kHertz[] = {25000, 5000, 1000, 3000, 0, -1};
constexpr u32 kFans = 3;
/// Temperature sensors that can be read; those of other boards cannot.
constexpr u32 kSensors[] = {0x10000, 0x10001, 0x10002, 0x10005, 0x50000, 0x60000, 0x60001};

}  // namespace

std::unique_ptr<ClimateService> StartOnBoard(std::uint8_t choice) {
  fake::Reset();
  const Board& board = kBoards[choice % std::size(kBoards)];
  fake::Unit() = {.type = board.type, .version = board.version};
  fake::Board().backplaneType = board.backplane;
  const std::size_t rest = choice / std::size(kBoards);
  for (u32 fan = 0; fan < kFans; ++fan) {
    fake::SetFan(fan, {.rpm = 3000, .hertz = kHertz[(rest + fan) % std::size(kHertz)]});
  }
  for (const u32 sensor : kSensors) fake::SetTemperature(sensor, 41500);
  auto service = std::make_unique<ClimateService>();
  fake::ServeTask(HWAPI_TEMPERATURE_SERVICE);
  service->Init();
  return service;
}

}  // namespace fuzz
