#include "BlackBoxRequests.h"

#include "../../test/Refusal.h"

#include <gtest/gtest.h>

#include <cstring>

namespace clmctl {
namespace {

TEST(StoreFileRequest, CarriesPathsAndOlderCopies) {
  const SApiBlackboxStoreFileReq request = StoreFileRequest("/rom/log", "log", 1);
  EXPECT_STREQ(request.sourceFile, "/rom/log");
  EXPECT_STREQ(request.targetFile, "log");
  EXPECT_EQ(request.numOfPreviousFiles, 1u);
}

TEST(StoreFileRequest, TakesPathsOf127Bytes) {
  const std::string path = "/" + std::string(126, 'x');
  EXPECT_EQ(StoreFileRequest(path, {}, 0).sourceFile, path);
  EXPECT_NE(Refusal([&] { StoreFileRequest(path + "x", {}, 0); }).find("at most 127 bytes, not 128"),
            std::string::npos);
  EXPECT_NE(Refusal([&] { StoreFileRequest("/x", path.substr(1) + "xx", 0); }).find("--as"), std::string::npos);
}

TEST(StoreFileRequest, RefusesARelativeSource) {
  EXPECT_NE(Refusal([] { StoreFileRequest("log", {}, 0); }).find("daemon's own file system"), std::string::npos);
  EXPECT_NE(Refusal([] { StoreFileRequest("", {}, 0); }), "");
}

TEST(StoreFileRequest, RefusesANameWithoutACharacter) {
  EXPECT_NE(Refusal([] { StoreFileRequest("/rom/log", "", 0); }).find("--as"), std::string::npos);
  EXPECT_STREQ(StoreFileRequest("/rom/log", std::nullopt, 0).targetFile, "");
}

TEST(StoreFileRequest, RefusesANameThatIsAPath) {
  EXPECT_NE(Refusal([] { StoreFileRequest("/rom/log", "../log", 0); }).find("--as"), std::string::npos);
}

TEST(StoreFileRequest, RefusesMoreOlderCopiesThanTheServiceKeeps) {
  EXPECT_EQ(StoreFileRequest("/rom/log", {}, 2).numOfPreviousFiles, 2u);
  EXPECT_NE(Refusal([] { StoreFileRequest("/rom/log", {}, 3); }).find("0, 1 or 2"), std::string::npos);
}

TEST(ResetRequest, SwitchesTheResetOn) {
  const SApi2ResetReq request = ResetRequest(4, 1, "why");
  EXPECT_EQ(request.reset_state, EHwapiResetServiceResetState_ON);
  EXPECT_EQ(request.reset_extra, 4u);
  EXPECT_EQ(request.reset_reason.category, EResetCategory_User);
  EXPECT_STREQ(request.reset_reason.extended_info, "why");
}

TEST(ResetRequest, TakesInformationOf59Bytes) {
  const std::string info(59, 'x');
  EXPECT_EQ(ResetRequest(4, 1, info).reset_reason.extended_info, info);
  EXPECT_NE(Refusal([&] { ResetRequest(4, 1, info + "x"); }).find("at most 59 bytes"), std::string::npos);
}

TEST(ExtendedInfo, NeedsNoTerminatingZero) {
  SResetReason reason{};
  EXPECT_EQ(ExtendedInfoOf(reason), "");
  std::memset(reason.extended_info, 'x', sizeof reason.extended_info);
  EXPECT_EQ(ExtendedInfoOf(reason), std::string(60, 'x'));
}

}  // namespace
}  // namespace clmctl
