#include "HwapiUnit.h"
#include "Rig.h"

#include <gtest/gtest.h>

#include <array>

namespace contract {
namespace {

TEST(Unit, IsOfItsTypeAndVersion) {
  EXPECT_EQ(ApiGetLocalUnitType(), rig::kUnitType);
  EXPECT_EQ(ApiGetLocalUnitVersion(), rig::kUnitVersion);
}

TEST(Unit, TellsItsProductionCode) {
  std::array<char, 64> buffer{};
  EXPECT_EQ(ApiGetModuleProductionCode(buffer.data(), buffer.size()), 1u);
  EXPECT_STREQ(buffer.data(), rig::kProductionCode);
}

TEST(Unit, TellsItsSerialNumber) {
  std::array<char, 64> buffer{};
  EXPECT_EQ(ApiGetModuleSerialNumber(buffer.data(), buffer.size()), 1u);
  EXPECT_STREQ(buffer.data(), rig::kSerialNumber);
}

TEST(Unit, CutsItsTextsToTheBuffer) {
  std::array<char, 8> buffer;
  buffer.fill('x');
  EXPECT_EQ(ApiGetModuleProductionCode(buffer.data(), 4), 1u);
  EXPECT_STREQ(buffer.data(), std::string(rig::kProductionCode).substr(0, 3).c_str());
  EXPECT_EQ(buffer[4], 'x');
  EXPECT_EQ(ApiGetModuleSerialNumber(buffer.data(), 4), 1u);
  EXPECT_STREQ(buffer.data(), std::string(rig::kSerialNumber).substr(0, 3).c_str());
}

}  // namespace
}  // namespace contract
