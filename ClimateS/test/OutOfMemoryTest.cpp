/// The black box when memory runs out: each allocation of each operation fails once.
#include "BlackBoxTest.h"
#include "FailingMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

const std::string kSource = "/tmp/a report with a long name";
const std::string kStored = "blackbox_20240101000000_of an earlier run";

/// @return a text of any length, made with enough memory
std::string Text(const char* text) {
  const EnoughMemory memory;
  return text;
}

/// A black box that has something of everything.
struct Scene {
  Scene() {
    fake::SetFile(kOamAlarmsFile, "new alarms\n");
    fake::SetFile(kOamSfpFile, "new sfp\n");
    fake::SetFile(kAlarmsFile, "old alarms\n");
    fake::SetFile(kSfpFile, "old sfp\n");
    fake::SetFile(kSource, "report\n");
    fake::SetFile(kLifedata + kStored, "old report\n");
    fake::SetFile(kConfigFile, "old configuration\n");
    fake::SetFile(kTraceFile, "#TEMPANDSPEED\n#\n2020-01-01T00:00:00.000Z\t1\t\n2020-01-01T00:01:00.000Z\t2\t\n");
    fake::SetFile(kBoardFile,
                  "RESET Reason and timestamp:\n2020-01-01T00:00:00.000Z Chip reset requested : User\nSW VERSION:\n");
    fake::MakeDir("/ffs/stb/config/lifedata");
  }

  void TakeIntoUse() {
    EXPECT_EQ(blackBox.init(EUnitType_Pivo), 1u);
    for (const char* sensor : {"A", "B", "a sensor with a long name"}) blackBox.addSensor(sensor);
    for (const char* fan : {"F", "a fan with a long name"}) blackBox.addFan(fan);
    blackBox.enableTemperatureTrace();
    blackBox.addTemperature("A", 41000);
    blackBox.addFanSpeed("F", 3000);
    blackBox.takeSnapshot();
  }

  static std::map<std::string, std::string> Files() {
    std::map<std::string, std::string> files;
    for (const std::string& path : fake::FilePaths()) files[path] = fake::FileContent(path).value_or("");
    return files;
  }

  struct FreshPlatform {
    FreshPlatform() { fake::Reset(); }
  };
  FreshPlatform platform;
  BlackBoxBoard board;
  BlackBoxData blackBox;
};

/// An operation as others call it.
struct Operation {
  const char* name;
  void (*run)(BlackBoxData& blackBox);
  bool initialized = true;

  friend std::ostream& operator<<(std::ostream& out, const Operation& operation) { return out << operation.name; }
};

const Operation kOperations[] = {
    {"init", [](BlackBoxData& box) { box.init(EUnitType_Pivo); }, false},
    {"enableTemperatureTrace", [](BlackBoxData& box) { box.enableTemperatureTrace(); }},
    {"addSensor", [](BlackBoxData& box) { box.addSensor(Text("a new sensor with a long name")); }},
    {"addSensorAgain", [](BlackBoxData& box) { box.addSensor(Text("a sensor with a long name")); }},
    {"removeSensor", [](BlackBoxData& box) { box.removeSensor(Text("a sensor with a long name")); }},
    {"addFan", [](BlackBoxData& box) { box.addFan(Text("a new fan with a long name")); }},
    {"addTemperature", [](BlackBoxData& box) { box.addTemperature(Text("a sensor with a long name"), 1); }},
    {"addTemperatureError", [](BlackBoxData& box) { box.addTemperatureError(Text("a sensor with a long name")); }},
    {"addFanSpeed", [](BlackBoxData& box) { box.addFanSpeed(Text("a fan with a long name"), 1); }},
    {"addFanSpeedError", [](BlackBoxData& box) { box.addFanSpeedError(Text("a fan with a long name")); }},
    {"takeSnapshot", [](BlackBoxData& box) { box.takeSnapshot(); }},
    {"handleSnapshotTimeout", [](BlackBoxData& box) { box.handleSnapshotTimeout(); }},
    {"writeTempAndSpeedDataToFile", [](BlackBoxData& box) { box.writeTempAndSpeedDataToFile(); }},
    {"readTempDataFromFile", [](BlackBoxData& box) { box.readTempDataFromFile(); }},
    {"createDataFiles", [](BlackBoxData& box) { box.createDataFiles(); }},
    {"createConfigFile", [](BlackBoxData& box) { box.createConfigFile(); }},
    {"createBlackboxFile", [](BlackBoxData& box) { box.createBlackboxFile(); }},
    {"blackBoxFileExists", [](BlackBoxData& box) { box.blackBoxFileExists(); }},
    {"copyAlarmsFile", [](BlackBoxData& box) { box.copyAlarmsFile(); }},
    {"copySfpFile", [](BlackBoxData& box) { box.copySfpFile(); }},
    {"CopyFileToNonRunningFS", [](BlackBoxData& box) { box.CopyFileToNonRunningFS(); }},
    {"cleanupOldFiles", [](BlackBoxData& box) { box.cleanupOldFiles(); }},
    {"copyFile", [](BlackBoxData& box) { box.copyFile(2, kSource.c_str(), "a long key for it"); }},
    {"copyFileThatRemovesOlderOnes", [](BlackBoxData& box) { box.copyFile(0, kSource.c_str(), "of an earlier run"); }},
    {"copyFileWithoutTarget", [](BlackBoxData& box) { box.copyFile(2, kSource.c_str(), nullptr); }},
    {"registerSelfTestFiles", [](BlackBoxData& box) { box.registerSelfTestFiles(); }},
    {"prepareBoardFile", [](BlackBoxData& box) { box.prepareFileForTechlog("blackbox"); }},
    {"prepareTraceFile", [](BlackBoxData& box) { box.prepareFileForTechlog("blackbox_temperature"); }},
    {"prepareSfpFile", [](BlackBoxData& box) { box.prepareFileForTechlog("blackbox_sfp"); }},
    {"prepareStoredFile", [](BlackBoxData& box) { box.prepareFileForTechlog(kStored.c_str()); }},
    {"prepareUnknownFile", [](BlackBoxData& box) { box.prepareFileForTechlog("a file that nobody knows"); }},
    {"readResetReasonsFromFile", [](BlackBoxData& box) { box.readResetReasonsFromFile(); }},
    {"checkResetType", [](BlackBoxData& box) { box.checkResetType(); }},
    {"updateLastResetResonIfRequested", [](BlackBoxData& box) { box.updateLastResetResonIfRequested(); }},
    {"writeResetReasonToBlackbox", [](BlackBoxData& box) { box.writeResetReasonToBlackbox(); }},
    {"addResetReasonWithTimestamp",
     [](BlackBoxData& box) { box.addResetReasonWithTimestamp(Text("Cold reset : User (by hand)")); }},
    {"ResetStateInfo",
     [](BlackBoxData& box) {
       char category[40], extendedInfo[60];
       box.ResetStateInfo(category, extendedInfo);
     }},
};

class OutOfMemoryTest : public testing::TestWithParam<Operation> {
 protected:
  static constexpr unsigned kMostAllocations = 2000;

  /// @return a black box before the operation; the reset service tells of a watchdog reset
  static std::unique_ptr<Scene> Before() {
    auto scene = std::make_unique<Scene>();
    scene->board.SetResetType(2);
    if (GetParam().initialized) scene->TakeIntoUse();
    fake::ClearLog();
    return scene;
  }

  /// Runs the operation once for each of its allocations, with that one failing.
  /// @param check looks at the outcome
  template <typename Check>
  static void FailEachAllocation(Check check) {
    for (unsigned nth = 1;; ++nth) {
      ASSERT_LT(nth, kMostAllocations);
      SCOPED_TRACE("allocation " + std::to_string(nth));
      const auto scene = Before();
      const FailingAllocation failing(nth);
      GetParam().run(scene->blackBox);
      if (!failing.Happened()) return;
      check(*scene);
    }
  }

  /// @return the files after the operation and a rewrite of all files
  static std::map<std::string, std::string> FilesAfter(Scene& scene) {
    GetParam().run(scene.blackBox);
    scene.blackBox.createDataFiles();
    return Scene::Files();
  }

  static bool LoggedOutOfMemory() {
    const std::vector<std::string> errors = fake::LogTexts(EAaSysLogSeverityLevel_Error);
    return std::any_of(errors.begin(), errors.end(), [](const std::string& line) {
      return line.starts_with("BlackBoxData::") && line.ends_with("(): out of memory");
    });
  }
};

TEST_P(OutOfMemoryTest, IsLoggedAndNothingIsThrown) {
  FailEachAllocation([](Scene&) { EXPECT_TRUE(LoggedOutOfMemory()); });
}

TEST_P(OutOfMemoryTest, LeavesEachFileWholeOldOrNew) {
  const auto before = (Before(), Scene::Files());
  const auto succeeding = Before();
  GetParam().run(succeeding->blackBox);
  const auto after = Scene::Files();
  FailEachAllocation([&](Scene&) {
    for (const auto& [path, content] : Scene::Files()) {
      const auto oldFile = before.find(path);
      const auto newFile = after.find(path);
      EXPECT_TRUE((oldFile != before.end() && content == oldFile->second) ||
                  (newFile != after.end() && content == newFile->second))
          << path << ":\n"
          << content;
    }
  });
}

TEST_P(OutOfMemoryTest, LeavesNoMessageAndNoTagsMemoryBehind) {
  FailEachAllocation([](Scene&) {
    EXPECT_EQ(fake::LiveMessages(), 0u);
    EXPECT_EQ(fake::LiveMemory(), 0u);
    EXPECT_THAT(fake::Violations(), IsEmpty());
  });
}

INSTANTIATE_TEST_SUITE_P(Of, OutOfMemoryTest, testing::ValuesIn(kOperations),
                         [](const auto& test) { return test.param.name; });

/// All but the start, which there is once in a process.
class OutOfMemoryOnceTest : public OutOfMemoryTest {};

TEST_P(OutOfMemoryOnceTest, TheNextTimeItWorks) {
  const auto succeeding = Before();
  const auto expected = FilesAfter(*succeeding);
  FailEachAllocation([&](Scene& scene) {
    fake::ClearLog();
    EXPECT_EQ(FilesAfter(scene), expected);
    EXPECT_FALSE(LoggedOutOfMemory());
  });
}

INSTANTIATE_TEST_SUITE_P(Of, OutOfMemoryOnceTest, testing::ValuesIn(std::begin(kOperations) + 1, std::end(kOperations)),
                         [](const auto& test) { return test.param.name; });

TEST(OutOfMemoryAtTheStartTest, TheBlackBoxIsInitializedOrSaysThatItIsNot) {
  for (unsigned nth = 1;; ++nth) {
    Scene scene;
    const FailingAllocation failing(nth);
    const u32 result = scene.blackBox.init(EUnitType_Pivo);
    EXPECT_EQ(result, scene.blackBox.isInitialized());
    if (!failing.Happened()) return;
  }
}

/// @return how many allocations it takes to find stored copies of earlier runs again
unsigned AllocationsToFind(unsigned copies) {
  Scene scene;
  for (unsigned i = 0; i < copies; ++i) {
    fake::SetFile(kLifedata + "blackbox_20240101" + std::to_string(100000 + i) + "_a key of its own", "");
  }
  const CountedAllocations counted;
  scene.blackBox.registerSelfTestFiles();
  return counted.Count();
}

TEST(ManyStoredFilesTest, ToFindTwiceAsManyAgainTakesTwiceTheWork) {
  EXPECT_LE(AllocationsToFind(400), 2 * AllocationsToFind(200));
}

TEST(ConfigFileMemoryTest, NothingPastTheWantedTextIsKept) {
  const auto allocationsWith = [](std::size_t lines) {
    std::string text;
    for (std::size_t i = 0; i < lines; ++i) text += std::string(250, 'x') + "\n";
    Scene scene;
    scene.TakeIntoUse();
    fake::SetFile(kConfigFile, text);
    const CountedAllocations counted;
    scene.blackBox.createConfigFile();
    return counted.Count();
  };
  EXPECT_EQ(allocationsWith(10'000), allocationsWith(10));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
