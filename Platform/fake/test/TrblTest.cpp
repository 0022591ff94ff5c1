#include "fake/PlatformTest.h"

#include <stdexcept>

namespace {

using Trbl = fake::PlatformTest;

int PrepareNumber(const char* name, const void* context) {
  EXPECT_STREQ(name, "trace");
  return *static_cast<const int*>(context);
}

TEST_F(Trbl, TheCollectorsCallBackGetsNameAndContext) {
  const int context = EAaTrblCbStatus_NotReady;
  AaTrblFileRegister("trace", "/trace", EAaTrblFilePriority_Normal, 0, PrepareNumber, nullptr, nullptr, &context);
  EXPECT_EQ(fake::PrepareTrblFile("trace"), EAaTrblCbStatus_NotReady);
}

TEST_F(Trbl, AnUnknownFileCannotBePrepared) { EXPECT_THROW(fake::PrepareTrblFile("trace"), std::invalid_argument); }

}  // namespace
