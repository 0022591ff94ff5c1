#include "HwapiException.h"

#include "Service.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace ps::hwapi::common {
namespace {

const CHwapiException kPlain("Reason", "Description", "File.cpp", 42);
const MsgHandlingException kMsgHandling("Payload missing", "Handler.cpp", 7);
const Service::InitFailedException kInitFailed("Registration failed", "Start.cpp", 8);
const u32 kErrorCode = 1001;
const OpException kOp("ddal_temp_get_curr", "Fail", kErrorCode, "Reader.cpp", 9);

TEST(HwapiException, IsAStandardException) {
  const std::exception& standard = kPlain;
  EXPECT_STREQ(standard.what(), "Reason");
}

TEST(HwapiException, KeepsItsDescription) { EXPECT_EQ(kPlain.getDescription(), "Description"); }

TEST(HwapiException, KeepsItsFile) { EXPECT_EQ(kPlain.getFile(), "File.cpp"); }

TEST(HwapiException, KeepsItsLine) { EXPECT_EQ(kPlain.getLine(), 42u); }

TEST(HwapiException, ACopyHasEveryField) {
  const CHwapiException copy(kPlain);
  EXPECT_STREQ(copy.what(), "Reason");
  EXPECT_EQ(copy.getDescription(), "Description");
  EXPECT_EQ(copy.getFile(), "File.cpp");
  EXPECT_EQ(copy.getLine(), 42u);
}

TEST(MsgHandlingException, IsAHwapiException) {
  EXPECT_TRUE((std::is_base_of_v<CHwapiException, MsgHandlingException>));
}

TEST(MsgHandlingException, TheReasonIsTheSameWhateverTheDescription) {
  EXPECT_STREQ(kMsgHandling.what(), "Message handling error");
  EXPECT_STREQ(MsgHandlingException("", "", 0).what(), "Message handling error");
}

TEST(MsgHandlingException, KeepsDescriptionFileAndLine) {
  EXPECT_EQ(kMsgHandling.getDescription(), "Payload missing");
  EXPECT_EQ(kMsgHandling.getFile(), "Handler.cpp");
  EXPECT_EQ(kMsgHandling.getLine(), 7u);
}

TEST(MsgHandlingException, MadeFromAnotherExceptionKeepsItsReason) {
  EXPECT_STREQ(MsgHandlingException(kInitFailed).what(), "Initialization failed");
}

TEST(MsgHandlingException, MadeFromAnotherExceptionKeepsItsDescriptionFileAndLine) {
  const MsgHandlingException converted = kPlain;
  EXPECT_EQ(converted.getDescription(), "Description");
  EXPECT_EQ(converted.getFile(), "File.cpp");
  EXPECT_EQ(converted.getLine(), 42u);
}

TEST(InitFailedException, IsAHwapiException) {
  EXPECT_TRUE((std::is_base_of_v<CHwapiException, Service::InitFailedException>));
}

TEST(InitFailedException, HasItsReason) { EXPECT_STREQ(kInitFailed.what(), "Initialization failed"); }

TEST(InitFailedException, KeepsDescriptionFileAndLine) {
  EXPECT_EQ(kInitFailed.getDescription(), "Registration failed");
  EXPECT_EQ(kInitFailed.getFile(), "Start.cpp");
  EXPECT_EQ(kInitFailed.getLine(), 8u);
}

TEST(OpException, IsAHwapiException) { EXPECT_TRUE((std::is_base_of_v<CHwapiException, OpException>)); }

TEST(OpException, HasItsReason) { EXPECT_STREQ(kOp.what(), "Operation failed"); }

TEST(OpException, KeepsDescriptionFileAndLine) {
  EXPECT_EQ(kOp.getDescription(), "Fail");
  EXPECT_EQ(kOp.getFile(), "Reader.cpp");
  EXPECT_EQ(kOp.getLine(), 9u);
}

TEST(OpException, KeepsTheNameOfTheOperation) { EXPECT_EQ(kOp.getOpName(), "ddal_temp_get_curr"); }

TEST(OpException, KeepsTheErrorCode) { EXPECT_EQ(kOp.getErrCode(), 1001u); }

TEST(OpException, KeepsTheErrorCodeThatItWasMadeWith) {
  u32 code = 5;
  const OpException exception("operation", "description", code, "File.cpp", 1);
  code = 6;
  EXPECT_EQ(exception.getErrCode(), 5u);
}

TEST(OpException, KeepsANegativeErrorCodeInTwosComplement) {
  const OpException exception("operation", "description", static_cast<u32>(-1004), "File.cpp", 1);
  EXPECT_EQ(static_cast<i32>(exception.getErrCode()), -1004);
}

TEST(OpException, ACopyHasEveryField) {
  const OpException copy(kOp);
  EXPECT_STREQ(copy.what(), "Operation failed");
  EXPECT_EQ(copy.getDescription(), "Fail");
  EXPECT_EQ(copy.getOpName(), "ddal_temp_get_curr");
  EXPECT_EQ(copy.getErrCode(), 1001u);
  EXPECT_EQ(copy.getFile(), "Reader.cpp");
  EXPECT_EQ(copy.getLine(), 9u);
}

}  // namespace
}  // namespace ps::hwapi::common
