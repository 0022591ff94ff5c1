#include "DescriptionInput.h"

#include "SimError.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace boardsim {
namespace {

constexpr const char* kDescription = "[unit]\ntype = \"Kel\"\nversion = \"Kela\"\n";

class DescriptionInputTest : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/boardsim-test-XXXXXX";
    m_folder = mkdtemp(name);
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }
  std::string Write(const std::string& text) const {
    std::ofstream(m_folder / "board.toml") << text;
    return m_folder / "board.toml";
  }
  /// Lets standard input of this process be the text, through a pipe.
  static void Pipe(const std::string& text) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    ASSERT_EQ(dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
    close(ends[0]);
  }
  static std::string Refusal(const std::string& name) {
    try {
      ReadDescriptionInput(name);
    } catch (const SimError& error) {
      EXPECT_EQ(error.Code(), ExitCode::Usage);
      return error.what();
    }
    return "";
  }

  std::filesystem::path m_folder;
};

TEST_F(DescriptionInputTest, IsAFile) {
  const DescriptionInput input = ReadDescriptionInput(Write(kDescription));
  EXPECT_EQ(input.text, kDescription);
  EXPECT_EQ(input.board.unit.version, EUnitVersion_Kela);
}

TEST_F(DescriptionInputTest, ComesThroughAPipe) {
  Pipe(kDescription);
  const DescriptionInput input = ReadDescriptionInput("-");
  EXPECT_EQ(input.text, kDescription);
  EXPECT_EQ(input.board.unit.version, EUnitVersion_Kela);
}

TEST_F(DescriptionInputTest, ErrorsNameTheFileAndTheLine) {
  const std::string path = Write("[unit]\ntype = \"Kel\"\nversion = \"Kelx\"\n");
  EXPECT_NE(Refusal(path).find(path + ":3: "), std::string::npos) << Refusal(path);
}

TEST_F(DescriptionInputTest, ErrorsNameStandardInput) {
  Pipe("[unit]\ntype = 7\n");
  EXPECT_NE(Refusal("-").find("standard input:2: "), std::string::npos);
}

TEST_F(DescriptionInputTest, AFileThatIsNotThereCanBeMade) {
  const std::string path = m_folder / "gone.toml";
  EXPECT_NE(Refusal(path).find("`boardsim detect >" + path), std::string::npos);
}

TEST_F(DescriptionInputTest, AFolderIsNone) { EXPECT_NE(Refusal(m_folder).find("is a folder"), std::string::npos); }

TEST_F(DescriptionInputTest, WhatHasNoEndIsNone) {
  EXPECT_NE(Refusal("/dev/zero").find("larger than 1 MiB"), std::string::npos);
}

}  // namespace
}  // namespace boardsim
