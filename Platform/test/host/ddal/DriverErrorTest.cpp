// Texts of the error codes.
#include "ddal_error.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>

namespace {

std::string Text(int code) {
  char text[60];
  return ddal_strerror(code, text, sizeof text);
}

TEST(DriverError, EveryKnownCodeHasATextOfItsOwn) {
  std::set<std::string> texts;
  for (const int code : {0, -1, -2, -3, -4, -5, -6, -7, -8, -9, -1001, -1004}) {
    EXPECT_EQ(Text(code).find("Unknown"), std::string::npos) << code;
    texts.insert(Text(code));
  }
  EXPECT_EQ(texts.size(), 12u);
}

TEST(DriverError, AnUnknownCodeIsNamed) {
  EXPECT_EQ(Text(-1002), "Unknown driver error -1002");
  EXPECT_EQ(Text(INT_MIN), "Unknown driver error -2147483648");
  EXPECT_EQ(Text(INT_MAX), "Unknown driver error 2147483647");
}

TEST(DriverError, TheTextIsCutToTheBuffer) {
  char text[6] = "?????";
  EXPECT_EQ(ddal_strerror(7, text, 4), text);
  EXPECT_STREQ(text, "Unk");
  EXPECT_EQ(text[4], '?');
}

TEST(DriverError, ABufferWithoutRoomIsLeftAlone) {
  char text[2] = "?";
  EXPECT_EQ(ddal_strerror(-1, text, 0), text);
  EXPECT_EQ(text[0], '?');
  EXPECT_EQ(ddal_strerror(-1, nullptr, 60), nullptr);
}

}  // namespace
