#include "SensorGroup.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace ps::hwapi::common::climate {
namespace {

const SensorGroup::MsgCreationFailedException kException("No message", "Group.cpp", 12);

TEST(MsgCreationFailedException, IsAHwapiException) {
  EXPECT_TRUE((std::is_base_of_v<CHwapiException, SensorGroup::MsgCreationFailedException>));
}

TEST(MsgCreationFailedException, HasItsReason) { EXPECT_STREQ(kException.what(), "Message creation failed"); }

TEST(MsgCreationFailedException, KeepsDescriptionFileAndLine) {
  EXPECT_EQ(kException.getDescription(), "No message");
  EXPECT_EQ(kException.getFile(), "Group.cpp");
  EXPECT_EQ(kException.getLine(), 12u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
