// What the pages show of files is what the service writes, and of names what it makes and finds again.
#include "BlackBoxTest.h"
#include "Page.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>

namespace ps::hwapi::common::climate {
namespace {

using testing::UnorderedElementsAreArray;

constexpr const char* kStoredFilesPage = "stored-files.md";

std::string ExampleOf(const std::string& page) {
  return page::Replaced(page::SectionOf(page, "Example").Block(), "→", "\t");
}

class ServicePagesTest : public InPrivateRoot<BlackBoxTest> {};

TEST_F(ServicePagesTest, TheConfigurationFileIsTheExample) {
  Init();
  EXPECT_EQ(File(kConfigFile), ExampleOf("configuration-file.md"));
}

TEST_F(ServicePagesTest, TheTraceFileIsTheExample) {
  fake::SetFile(kTraceFile, ExampleOf("trace-file.md"));
  Init();
  m_blackBox.addSensor("KEL");
  m_blackBox.addSensor("KEL_MCU");
  m_blackBox.addFan("FAN_1");
  EnableTrace();
  m_blackBox.addTemperature("KEL", 40250);
  m_blackBox.addTemperature("KEL", 41500);
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
  EXPECT_EQ(File(kTraceFile), ExampleOf("trace-file.md"));
}

TEST_F(ServicePagesTest, TheBoardFileIsTheExample) {
  WriteRealFile("/ffs/fs1/TargetBD_R1_2.3.xml");
  WriteRealFile("/ffs/fs2/TargetBD_R1_2.2.xml");
  fake::SetUtc({.year = 2024, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42});
  fake::Unit().productionCode = "472573A.101";
  fake::FailEvery("ApiGetModuleSerialNumber");
  fake::Board().isti = 3;
  fake::SetFile(kBoardFile, ExampleOf("board-file.md"));
  Init();
  EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
  EXPECT_EQ(File(kBoardFile), ExampleOf("board-file.md"));
}

/// Stored files as their page has them.
class StoredFilesPageTest : public BlackBoxTest {
 protected:
  StoredFilesPageTest() { Init(); }

  /// @return the names in the lifedata directory
  static std::vector<std::string> Names() {
    std::vector<std::string> names = fake::FilePaths();
    std::erase_if(names, [](const std::string& path) { return !path.starts_with(kLifedata); });
    for (std::string& name : names) name.erase(0, kLifedata.size());
    return names;
  }

  static void SetClock(const std::string& text) {
    SAaTime now{};
    ASSERT_EQ(std::sscanf(text.c_str(), "%u-%u-%u %u:%u:%u", &now.year, &now.month, &now.day, &now.hour, &now.minute,
                          &now.second),
              6);
    fake::SetUtc(now);
  }

  static std::string First(const std::string& cell) {
    const std::vector<std::string> parts = page::Quoted(cell);
    return parts.empty() ? "" : parts.front();
  }
};

TEST_F(StoredFilesPageTest, NamesHaveTheKeysOfThePage) {
  const page::Section section = page::SectionOf(kStoredFilesPage, "What cannot be told");
  ASSERT_FALSE(section.rows.empty());
  for (const page::Row& row : section.rows) {
    fake::RemoveAll(kLifedata);
    fake::SetFile(kLifedata + First(row.at(0)), "kept");
    Forget();
    m_blackBox.registerSelfTestFiles();
    const bool copy = row.at(1).starts_with('`');
    EXPECT_EQ(m_blackBox.isStoredFile(First(row.at(0))), copy) << row.at(0);
    ASSERT_EQ(fake::LogLines().empty(), !copy) << row.at(0);
    if (copy) {
      EXPECT_THAT(fake::LogLines().front().text, testing::EndsWith("with key '" + First(row.at(1)) + "'"));
    }
  }
}

TEST_F(StoredFilesPageTest, ExampleIsWhatTheServiceDoes) {
  fake::SetFile("/tmp/selftest", "result");
  std::vector<std::string> expected = Names();
  const page::Section section = page::SectionOf(kStoredFilesPage, "Example");
  ASSERT_FALSE(section.rows.empty());
  for (const page::Row& row : section.rows) {
    SetClock(row.at(0));
    const u32 copies = static_cast<u32>(std::stoul(row.at(3)));
    EXPECT_EQ(m_blackBox.copyFile(copies, First(row.at(1)).c_str(), First(row.at(2)).c_str()),
              row.at(4) == "done" ? 1u : 0u)
        << row.at(0);
    for (const std::string& name : page::Quoted(row.at(5))) expected.push_back(name);
    for (const std::string& name : page::Quoted(row.at(6))) std::erase(expected, name);
    EXPECT_THAT(Names(), UnorderedElementsAreArray(expected)) << row.at(0);
  }
}

TEST_F(StoredFilesPageTest, ACopyHasTheTimeOfTheClock) {
  SetClock("2024-03-07 14:05:09");
  EXPECT_EQ(m_blackBox.createTimeStamp(), "20240307140509");
  fake::FailEvery("AaUtcTimeGet");
  EXPECT_EQ(m_blackBox.createTimeStamp(), "00000000000000");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
