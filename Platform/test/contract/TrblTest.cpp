#include "AaTrbl.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

int Prepare(const char*, const void*) { return EAaTrblCbStatus_Ok; }
int Store(const char*, const void*) { return EAaTrblCbStatus_Ok; }
void Remove(const char*, const void*) {}

i32 Register(const char* name) {
  return AaTrblFileRegister(name, "/ram/file.txt", EAaTrblFilePriority_Normal, 0, Prepare, Store, Remove, nullptr);
}

TEST(TrblFile, IsRegisteredAndTakenOutAgain) {
  EXPECT_EQ(Register("contract-once"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-once"), EAaTrblRet_Ok);
}

TEST(TrblFile, NeedsANameOfItsOwn) {
  EXPECT_EQ(Register("contract-twice"), EAaTrblRet_Ok);
  EXPECT_EQ(Register("contract-twice"), EAaTrblRet_Failed);
  EXPECT_EQ(AaTrblFileUnregister("contract-twice"), EAaTrblRet_Ok);
}

TEST(TrblFile, MayComeBack) {
  EXPECT_EQ(Register("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(Register("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-back"), EAaTrblRet_Ok);
}

TEST(TrblFile, ThatIsUnknownCannotBeTakenOut) { EXPECT_EQ(AaTrblFileUnregister("contract-none"), EAaTrblRet_Failed); }

TEST(TrblFile, IsTakenOutOnce) {
  EXPECT_EQ(Register("contract-gone"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-gone"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-gone"), EAaTrblRet_Failed);
}

}  // namespace
}  // namespace contract
