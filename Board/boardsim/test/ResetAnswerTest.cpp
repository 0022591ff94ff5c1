#include "ResetAnswer.h"

#include "SimError.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace boardsim {
namespace {

const ResetAnswer kWatchdog{.type = ERPresetTypeWdog};

TEST(ResetAnswer, OfANumberIsThatTypeAtOnce) {
  const ResetAnswer late{.type = ERPresetTypeTemp, .delaySeconds = 3};
  EXPECT_EQ(ResetAnswer::FromCommand("2", late), kWatchdog);
  EXPECT_EQ(ResetAnswer::FromCommand("0xFFFFFFFF", late).type, 0xFFFFFFFFu);
}

TEST(ResetAnswer, OfAMannerKeepsTheType) {
  EXPECT_EQ(ResetAnswer::FromCommand("late=12", kWatchdog),
            (ResetAnswer{.type = ERPresetTypeWdog, .delaySeconds = 12}));
  EXPECT_EQ(ResetAnswer::FromCommand("silent", kWatchdog), (ResetAnswer{.type = ERPresetTypeWdog, .silent = true}));
  EXPECT_EQ(ResetAnswer::FromCommand("fail=2", kWatchdog),
            (ResetAnswer{.type = ERPresetTypeWdog, .status = ERP_RAM_status_access_fail}));
}

TEST(ResetAnswer, HasOneManner) {
  const ResetAnswer late{.type = ERPresetTypeWdog, .delaySeconds = 3};
  EXPECT_EQ(ResetAnswer::FromCommand("silent", late), (ResetAnswer{.type = ERPresetTypeWdog, .silent = true}));
}

TEST(ResetAnswer, OfOtherTextIsAUsageError) {
  for (const char* text : {"", "x", "-1", "4294967296", "fail=", "fail=0", "late=", "late=4001", "late=1s", "2 loud"}) {
    try {
      ResetAnswer::FromCommand(text, {});
      ADD_FAILURE() << text;
    } catch (const SimError& error) {
      EXPECT_EQ(error.Code(), ExitCode::Usage) << text;
    }
  }
}

/// Answers in a file of a fresh folder.
class ResetAnswerFile : public testing::Test {
 protected:
  ResetAnswerFile() {
    char name[] = "/tmp/boardsim-test-XXXXXX";
    m_folder = mkdtemp(name);
  }
  ~ResetAnswerFile() override { std::filesystem::remove_all(m_folder); }
  std::string File() const { return m_folder / "reset-type"; }

  std::filesystem::path m_folder;
};

TEST_F(ResetAnswerFile, IsReadBackAsItWasWritten) {
  for (const char* text : {"2", "2 silent", "2 late=12", "2 fail=7"}) {
    const ResetAnswer answer = ResetAnswer::FromCommand(text, {});
    answer.Save(File());
    EXPECT_EQ(ResetAnswer::Load(File()), answer) << text;
    EXPECT_EQ(answer.Line(), text);
  }
}

TEST_F(ResetAnswerFile, ThatIsNotThereHasNoAnswer) { EXPECT_EQ(ResetAnswer::Load(File()), std::nullopt); }

TEST_F(ResetAnswerFile, WithOtherTextHasNoAnswer) {
  std::ofstream(File()) << "what?\n";
  EXPECT_EQ(ResetAnswer::Load(File()), std::nullopt);
}

TEST_F(ResetAnswerFile, InAFolderThatIsNotThereCannotBeWritten) {
  EXPECT_THROW(kWatchdog.Save(m_folder / "none" / "reset-type"), SimError);
}

}  // namespace
}  // namespace boardsim
