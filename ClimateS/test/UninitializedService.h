/// @file
/// The fixture of tests that look at the life cycle of the service.
#pragma once

#include "ClimateService.h"
#include "fake/PlatformTest.h"

#include <optional>
#include <string>

namespace ps::hwapi::common::climate {

/// A service that is constructed and not yet started, on a board with three fans and without a black box.
class UninitializedServiceTest : public fake::PlatformTest {
 protected:
  UninitializedServiceTest() {
    fake::Unit().type = EUnitType_Vyd;
    fake::Unit().version = EUnitVersion_Vyda;
  }

  /// Starts the service on a board of that version.
  void InitOn(EUnitVersion version) {
    fake::Unit().version = version;
    m_service->Init();
  }

  /// @return the call that gives a tag a number of 4 bytes
  static fake::Call TagSet(const std::string& name, u32 value) {
    return {"AaConfigTagPublicSet", name, fake::BytesOf(value)};
  }
  /// @return the call that registers a handler
  static fake::Call HandlerAdded(u32 id) { return {"Service::AddMsgDelegate", id}; }

  std::optional<ClimateService> m_service{std::in_place};
};

}  // namespace ps::hwapi::common::climate
