// Command lines.
#include "Service.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using ps::hwapi::common::ArgumentParser;

namespace {

class ArgumentParserTest : public testing::Test {
 protected:
  ArgumentParserTest() { m_parser.AddOption("-V Verbose\n"); }
  std::string Parse(std::vector<const char*> words) {
    words.insert(words.begin(), "/usr/bin/service");
    return m_parser.Parse(static_cast<int>(words.size()), words.data());
  }

  ArgumentParser m_parser;
};

TEST_F(ArgumentParserTest, AnOptionThatIsNotGivenHasNoText) {
  EXPECT_EQ(Parse({}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "");
}

TEST_F(ArgumentParserTest, ABareOptionIsOn) {
  EXPECT_EQ(Parse({"-V"}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "arg on");
}

TEST_F(ArgumentParserTest, AnOptionsValueIsItsText) {
  EXPECT_EQ(Parse({"-V", "off"}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "arg off");
}

TEST_F(ArgumentParserTest, AnOptionWhoseValueIsTheTextOfABareOneIsOn) {
  EXPECT_EQ(Parse({"-V", "arg on"}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "arg on");
}

TEST_F(ArgumentParserTest, ABoardMayHaveAnyName) {
  EXPECT_EQ(Parse({"--board", "arg on"}), "");
  EXPECT_EQ(m_parser.GetOption("-board"), "arg arg on");
}

TEST_F(ArgumentParserTest, AnOptionIsNoValueOfTheOneBeforeIt) {
  EXPECT_EQ(Parse({"-V", "--board", "file"}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "arg on");
  EXPECT_EQ(m_parser.GetOption("-board"), "arg file");
}

TEST_F(ArgumentParserTest, ALongOptionMayHaveItsValueBehindAnEqualsSign) {
  EXPECT_EQ(Parse({"--board=a=b"}), "");
  EXPECT_EQ(m_parser.GetOption("-board"), "arg a=b");
}

TEST_F(ArgumentParserTest, ABoardNeedsAFile) {
  EXPECT_TRUE(Parse({"--board"}).starts_with("option \"--board\" needs a file\n"));
  EXPECT_TRUE(Parse({"--board", "-V"}).starts_with("option \"--board\" needs a file\n"));
  EXPECT_TRUE(Parse({"--board="}).starts_with("option \"--board\" needs a file\n"));
}

TEST_F(ArgumentParserTest, AnUnknownOptionIsNamedWithWhatThereIs) {
  EXPECT_EQ(Parse({"-W"}),
            "unknown option \"-W\"\nusage: service [options]\n"
            "  --board FILE  Board description (environment HWAPI_BOARD)\n  --help  Shows this text\n  -V Verbose\n");
}

TEST_F(ArgumentParserTest, WhatIsNoOptionIsRefused) {
  EXPECT_TRUE(Parse({"word"}).starts_with("unexpected argument \"word\"\n"));
  EXPECT_TRUE(Parse({"-"}).starts_with("unexpected argument \"-\"\n"));
  EXPECT_TRUE(Parse({""}).starts_with("unexpected argument \"\"\n"));
}

TEST_F(ArgumentParserTest, ParsingAgainForgetsTheFirstCommandLine) {
  EXPECT_EQ(Parse({"-V"}), "");
  EXPECT_EQ(Parse({}), "");
  EXPECT_EQ(m_parser.GetOption("V"), "");
}

TEST_F(ArgumentParserTest, AnEmptyCommandLineIsAllowed) { EXPECT_EQ(m_parser.Parse(0, nullptr), ""); }

TEST_F(ArgumentParserTest, AnOptionThatDoesNotExistHasNoText) { EXPECT_EQ(m_parser.GetOption("nonsense"), ""); }

}  // namespace
