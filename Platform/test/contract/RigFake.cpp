#include "Rig.h"

#include "fake/PlatformTest.h"

namespace {

constexpr const char* kDirectory = "/contract";

class FakeBoard : public testing::Environment {
 public:
  void SetUp() override {
    fake::Reset();
    fake::SetOwnNid(rig::kOwnNid);
    fake::MakeDir(kDirectory);
    fake::SetRad(rig::kRad, rig::kRadValue);
    fake::SetTemperature(rig::kSensor, 20000);
    for (const ddal_fan_id_t fan : {rig::kFan, rig::kChipFan}) fake::SetFan(fan, {});
    fake::Unit() = {rig::kUnitType, rig::kUnitVersion, rig::kProductionCode, rig::kSerialNumber};
    fake::BoardData& board = fake::Board();
    board.backplaneType = rig::kBackplane;
    board.activeFileSystem = rig::kActiveFileSystem;
    board.runningImage = rig::kImage;
    board.resetLoopCount = rig::kResetLoopCount;
    board.mountStates = {{DDAL_FFS_FS1, DDAL_FFS_READ_ONLY}, {DDAL_FFS_FS2, DDAL_FFS_WRITABLE}};
    board.isti = rig::kIsti;
    board.eccSingle = rig::kEccSingle;
    board.eccDouble = rig::kEccDouble;
    board.psu = {{DDAL_PSU_VENDOR, rig::kPsuVendor}};
    board.filter = {{DDAL_FILTER_PRODUCT_CODE, rig::kFilterProductCode}};
    board.filterNumbers = {{DDAL_FILTER_HWSWID, rig::kFilterHwswid}};
  }

  void TearDown() override {
    for (const std::string& violation : fake::Violations()) ADD_FAILURE() << violation;
    EXPECT_EQ(fake::LiveMessages(), 0u);
    EXPECT_EQ(fake::LiveMemory(), 0u);
    EXPECT_EQ(fake::OpenFiles(), 0u);
  }
};

const auto* const g_board = testing::AddGlobalTestEnvironment(new FakeBoard);

}  // namespace

namespace rig {

std::string Directory() { return kDirectory; }

void SetTemperature(int thousandths) { fake::SetTemperature(kSensor, thousandths); }

void StopService() {}  // it ends when nothing is queued

}  // namespace rig
