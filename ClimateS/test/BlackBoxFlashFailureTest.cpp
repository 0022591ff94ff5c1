/// Full and failing flash: whatever call fails, no file is lost or halved, and the next attempt works.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <memory>
#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Ne;

using Files = std::map<std::string, std::string>;

const std::string kSource = "/tmp/selftest.txt";
const std::string kStandbyFile = "/ffs/stb/config/lifedata/blackbox";

std::string File(const std::string& path) { return fake::FileContent(path).value_or("(no file)"); }

Files AllFiles() {
  Files files;
  for (const std::string& path : fake::FilePaths()) files.emplace(path, fake::FileContent(path).value_or(""));
  return files;
}

/// @name What the black box does with its files
///@{
void CreateConfigFile(BlackBoxData& blackBox) { blackBox.createConfigFile(); }
void CreateDataFiles(BlackBoxData& blackBox) { blackBox.createDataFiles(); }
void CopyToStandby(BlackBoxData& blackBox) { blackBox.CopyFileToNonRunningFS(); }
void StoreFile(BlackBoxData& blackBox) { blackBox.copyFile(0, kSource.c_str(), nullptr); }
void PrepareForTechlog(BlackBoxData& blackBox) {
  for (const char* name : {"blackbox", "blackbox_temperature", "blackbox_alarms", "blackbox_sfp"}) {
    blackBox.prepareFileForTechlog(name);
  }
}
///@}

/// Something that the black box does, and a call in it that fails on a flash that is full, read-only or broken.
struct Scenario {
  const char* name;
  void (*run)(BlackBoxData&);
  const char* function;
  bool hasFiles = true;  ///< the black-box files are there before
};

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

std::string NameOf(const testing::TestParamInfo<Scenario>& scenario) {
  return std::string(scenario.param.name) + "With" + scenario.param.function;
}

/// A fresh board with a black box in use, whose files are older than what it would write now.
class World {
 public:
  explicit World(bool hasFiles = true) : m_board((fake::Reset(), std::make_unique<BlackBoxBoard>())) {
    fake::SetFile(kSource, "result");
    fake::SetFile(kOamAlarmsFile, "alarms");
    fake::SetFile(kOamSfpFile, "sfp");
    EXPECT_EQ(blackBox.init(EUnitType_Pivo), 1u);
    blackBox.addSensor("sensor");
    blackBox.enableTemperatureTrace();
    blackBox.createDataFiles();
    blackBox.copyFile(0, kSource.c_str(), nullptr);
    fake::SetFile(kStandbyFile, "an older board file");
    fake::SetFile(kConfigFile, "an older configuration");
    fake::SetFile(kOamAlarmsFile, "new alarms");
    fake::SetFile(kSource, "new result");
    fake::AdvanceTime(60'000'000);
    blackBox.takeSnapshot();
    if (!hasFiles) {
      for (const std::string& path : {kBoardFile, kTraceFile, kAlarmsFile, kSfpFile}) fake::RemoveAll(path);
    }
    fake::Clear();
    fake::ClearLog();
  }

  BlackBoxData blackBox;

 private:
  std::unique_ptr<BlackBoxBoard> m_board;
};

class BlackBoxFlashFailureTest : public InPrivateRoot<fake::PlatformTest>,
                                 public testing::WithParamInterface<Scenario> {
 protected:
  /// Runs the scenario in a fresh world with the nth call of the function failing, then @p check.
  /// @return whether there was such a call
  template <typename Check>
  bool RunFailing(unsigned nth, Check check) {
    World world(GetParam().hasFiles);
    m_before = AllFiles();
    fake::FailCall(GetParam().function, nth);
    GetParam().run(world.blackBox);
    const auto calls = fake::Calls(GetParam().function);
    if (calls.size() < nth) return false;
    m_failed = calls.at(nth - 1);
    fake::StopFailing();
    check(world);
    return true;
  }

  /// Does that for every call that there is.
  template <typename Check>
  void ForEachFailingCall(Check check) {
    unsigned nth = 1;
    for (; RunFailing(nth, check); ++nth) {
      if (HasFailure()) FAIL() << "with call " << nth << " failing: " << m_failed;
    }
    EXPECT_GT(nth, 1u) << "no such call";
  }

  /// @return the files after the scenario without a failure
  Files Undisturbed() {
    World world(GetParam().hasFiles);
    GetParam().run(world.blackBox);
    return AllFiles();
  }

  Files m_before;                     ///< before the failure
  fake::Call m_failed{"AaFileOpen"};  ///< the call that failed
};

TEST_P(BlackBoxFlashFailureTest, LeavesEveryFileAsItWasOrAsItShouldBe) {
  const Files wanted = Undisturbed();
  ForEachFailingCall([&](World&) {
    for (const auto& [path, content] : AllFiles()) {
      const auto before = m_before.find(path);
      const bool unchanged = before != m_before.end() && before->second == content;
      const auto after = wanted.find(path);
      const bool complete = after != wanted.end() && after->second == content;
      EXPECT_TRUE(unchanged || complete) << path << ": " << content;
    }
  });
}

TEST_P(BlackBoxFlashFailureTest, LosesNoFile) {
  const Files wanted = Undisturbed();
  ForEachFailingCall([&](World&) {
    const Files now = AllFiles();
    for (const auto& [path, content] : m_before) {
      EXPECT_TRUE(now.contains(path) || !wanted.contains(path)) << path;
    }
  });
}

TEST_P(BlackBoxFlashFailureTest, LetsTheNextAttemptWork) {
  const Files wanted = Undisturbed();
  ForEachFailingCall([&](World& world) {
    GetParam().run(world.blackBox);
    const Files now = AllFiles();
    for (const auto& [path, content] : wanted) EXPECT_EQ(now.contains(path) ? now.at(path) : "", content) << path;
  });
}

TEST_P(BlackBoxFlashFailureTest, LeavesNoFileOpen) {
  ForEachFailingCall([](World&) { EXPECT_EQ(fake::OpenFiles(), 0u); });
}

INSTANTIATE_TEST_SUITE_P(Scenarios, BlackBoxFlashFailureTest,
                         testing::Values(Scenario{"CreateConfigFile", CreateConfigFile, "AaFileOpen"},
                                         Scenario{"CreateConfigFile", CreateConfigFile, "AaFileReadLine"},
                                         Scenario{"CreateConfigFile", CreateConfigFile, "AaFileWrite"},
                                         Scenario{"CreateConfigFile", CreateConfigFile, "AaFileClose"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileOpen"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileWrite"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileClose"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileCopy"},
                                         Scenario{"CopyToStandby", CopyToStandby, "AaFileOpen"},
                                         Scenario{"CopyToStandby", CopyToStandby, "AaFileClose"},
                                         Scenario{"CopyToStandby", CopyToStandby, "AaFileCopy"},
                                         Scenario{"StoreFile", StoreFile, "AaFileExists"},
                                         Scenario{"StoreFile", StoreFile, "AaFileRemove"},
                                         Scenario{"StoreFile", StoreFile, "AaFileCopy"},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileOpen", false},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileWrite", false},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileClose", false},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileCopy", false}),
                         NameOf);

/// Calls whose failure the log must tell.
class BlackBoxFlashFailureLogTest : public BlackBoxFlashFailureTest {};

TEST_P(BlackBoxFlashFailureLogTest, TellsWhatWasNotWrittenOrCopied) {
  ForEachFailingCall([&](World&) {
    if (m_failed.function == "AaFileOpen" && m_failed.arguments.at(1) == "r") return;  // counts as missing
    EXPECT_THAT(fake::LogTexts(EAaSysLogSeverityLevel_Error), Contains(HasSubstr(m_failed.arguments.at(0).Text())));
  });
}

INSTANTIATE_TEST_SUITE_P(Scenarios, BlackBoxFlashFailureLogTest,
                         testing::Values(Scenario{"CreateConfigFile", CreateConfigFile, "AaFileOpen"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileOpen"},
                                         Scenario{"CreateDataFiles", CreateDataFiles, "AaFileCopy"},
                                         Scenario{"StoreFile", StoreFile, "AaFileCopy"},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileOpen", false},
                                         Scenario{"PrepareForTechlog", PrepareForTechlog, "AaFileCopy", false}),
                         NameOf);

/// The start of another process on a flash that fails once.
class BlackBoxStartOnFailingFlashTest : public fake::PlatformTest, public testing::WithParamInterface<const char*> {
 protected:
  static u32 StartAnew() {
    for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
    BlackBoxData anew;
    return anew.init(EUnitType_Pivo);
  }

  /// @return the files after a start without a failure
  static Files Undisturbed() {
    const World world;
    EXPECT_EQ(StartAnew(), 1u);
    return AllFiles();
  }
};

TEST_P(BlackBoxStartOnFailingFlashTest, LeavesEveryFileAsItWasOrAsItShouldBe) {
  const Files wanted = Undisturbed();
  for (unsigned nth = 1; !HasFailure(); ++nth) {
    const World world;
    const Files before = AllFiles();
    fake::FailCall(GetParam(), nth);
    StartAnew();
    for (const auto& [path, content] : before) {
      EXPECT_THAT(File(path), AnyOf(content, wanted.at(path))) << path << ", call " << nth;
    }
    if (fake::Calls(GetParam()).size() < nth) break;
  }
}

TEST_P(BlackBoxStartOnFailingFlashTest, LetsTheNextStartWork) {
  const Files wanted = Undisturbed();
  for (unsigned nth = 1; !HasFailure(); ++nth) {
    const World world;
    fake::FailCall(GetParam(), nth);
    StartAnew();
    if (fake::Calls(GetParam()).size() < nth) break;
    fake::StopFailing();
    EXPECT_EQ(StartAnew(), 1u) << "call " << nth;
    EXPECT_EQ(AllFiles(), wanted) << "call " << nth;
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, BlackBoxStartOnFailingFlashTest,
                         testing::Values("AaFileDirExists", "AaFileOpen", "AaFileClose", "AaFileWrite",
                                         "AaFileReadLine", "AaFileListDir"));

/// A flash that takes nothing for a while.
class BlackBoxFullFlashTest : public BlackBoxTest {};

TEST_F(BlackBoxFullFlashTest, KeepsTheOlderFilesAndTakesTheNewOnesLater) {
  World world;
  const Files before = AllFiles();
  fake::FailEvery("AaFileWrite");
  fake::FailEvery("AaFileCopy");
  world.blackBox.createDataFiles();
  EXPECT_EQ(AllFiles(), before);
  fake::StopFailing();
  world.blackBox.createDataFiles();
  EXPECT_THAT(File(kBoardFile), Ne(before.at(kBoardFile)));
  EXPECT_THAT(File(kTraceFile), Ne(before.at(kTraceFile)));
}

TEST_F(BlackBoxFullFlashTest, ReadOnlyKeepsTheOlderFilesAndTakesTheNewOnesLater) {
  World world;
  const Files before = AllFiles();
  fake::SetReadOnly("/ffs");
  world.blackBox.createDataFiles();
  EXPECT_EQ(AllFiles(), before);
  fake::SetReadOnly("/ffs", false);
  world.blackBox.createDataFiles();
  EXPECT_THAT(File(kBoardFile), Ne(before.at(kBoardFile)));
}

TEST_F(BlackBoxFullFlashTest, KeepsTheTraceInMemory) {
  World world;
  fake::FailEvery("AaFileWrite");
  world.blackBox.createDataFiles();
  world.blackBox.takeSnapshot();
  fake::StopFailing();
  world.blackBox.createDataFiles();
  const std::string trace = File(kTraceFile);
  EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 7 + 3);  // the first one, one before and one after
}

TEST_F(BlackBoxFullFlashTest, LetsTheStartSucceedWhenTheConfigurationCannotBeWrittenWhole) {
  fake::FailEvery("AaFileWrite");
  EXPECT_EQ(m_blackBox.init(EUnitType_Kel), 1u);
  EXPECT_EQ(File(kConfigFile), "(no file)");
}

TEST_F(BlackBoxFullFlashTest, StopsTheStartWhenTheConfigurationCannotBeOpened) {
  fake::SetReadOnly("/ffs");
  EXPECT_EQ(m_blackBox.init(EUnitType_Kel), 0u);
  EXPECT_EQ(m_blackBox.isInitialized(), 0u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
