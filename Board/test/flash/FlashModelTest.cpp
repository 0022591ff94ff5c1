// The model and the judge by themselves: known mistakes in writing a file must be found.
#include "Expectation.h"
#include "FlashModel.h"

#include <gtest/gtest.h>

#include <set>

namespace flash {
namespace {

using Kind = Operation::Kind;

const std::string kFile = "/ffs/file";
const std::string kTemporary = "/ffs/.file.new";
constexpr FileId kOldId = 2;
constexpr FileId kNewId = 3;
const std::string kOld = "the old content";
const std::string kNew = "the new content, which is longer than a block";

/// A change of one file, step by step.
class FlashModelTest : public ::testing::Test {
 protected:
  void Create(const std::string& path) {
    m_operations.push_back({.kind = Kind::Create, .path = path, .file = kNewId, .mode = 0644});
  }
  void Write(FileId file, const std::string& data) {
    m_operations.push_back({.kind = Kind::Write, .file = file, .data = data});
  }
  void Truncate(FileId file) { m_operations.push_back({.kind = Kind::Truncate, .file = file}); }
  void SyncFile() { m_operations.push_back({.kind = Kind::Sync, .file = kNewId}); }
  void SyncFolder() { m_operations.push_back({.kind = Kind::SyncFolder, .path = "/ffs"}); }
  void Rename() {
    m_operations.push_back({.kind = Kind::Rename, .path = kTemporary, .newPath = kFile, .file = kNewId});
  }
  void Remove(const std::string& path) { m_operations.push_back({.kind = Kind::Remove, .path = path}); }

  FlashModel::Count Count() const {
    return FlashModel(m_before, m_operations).ForEachState([](const Tree&, bool) { return true; });
  }
  /// @return whether a power cut can do harm
  bool IsDangerous() const {
    const Expectation expected(m_before, {{kFile, {.mode = 0644, .content = kNew}}});
    bool isDangerous = false;
    FlashModel(m_before, m_operations).ForEachState([&](const Tree& state, bool atEnd) {
      isDangerous |= !(atEnd ? expected.FaultsOfDone(state) : expected.FaultsOf(state)).empty();
      return !isDangerous;
    });
    return isDangerous;
  }

  const Tree m_before = {{kFile, {.mode = 0644, .content = kOld, .id = kOldId}}};
  Operations m_operations;
};

TEST_F(FlashModelTest, WritingSyncingRenamingAndSyncingTheFolderIsSafe) {
  Create(kTemporary);
  Write(kNewId, kNew);
  SyncFile();
  Rename();
  SyncFolder();
  EXPECT_FALSE(IsDangerous());
}

TEST_F(FlashModelTest, RenamingWhatWasNotSyncedIsDangerous) {
  Create(kTemporary);
  Write(kNewId, kNew);
  Rename();
  SyncFolder();
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, SyncingOnlyAfterTheRenameIsDangerous) {
  Create(kTemporary);
  Write(kNewId, kNew);
  Rename();
  SyncFile();
  SyncFolder();
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, WritingOnAfterTheSyncIsDangerous) {
  Create(kTemporary);
  SyncFile();
  Write(kNewId, kNew);
  Rename();
  SyncFolder();
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, NotSyncingTheFolderIsDangerous) {
  Create(kTemporary);
  Write(kNewId, kNew);
  SyncFile();
  Rename();
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, RemovingTheOldFileFirstIsDangerous) {
  Create(kTemporary);
  Write(kNewId, kNew);
  SyncFile();
  Remove(kFile);
  Rename();
  SyncFolder();
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, WritingInPlaceIsDangerous) {
  Truncate(kOldId);
  Write(kOldId, kNew);
  m_operations.push_back({.kind = Kind::Sync, .file = kOldId});
  EXPECT_TRUE(IsDangerous());
}

TEST_F(FlashModelTest, ContentThatWasNotSyncedCanBeMissingCutOrZeroed) {
  Create(kTemporary);
  SyncFolder();
  Write(kNewId, "12345678");
  std::set<std::string> found;
  FlashModel(m_before, m_operations).ForEachState([&](const Tree& state, bool atEnd) {
    if (atEnd) found.insert(state.at(kTemporary).content);
    return true;
  });
  const std::string zeros(4, '\0');
  EXPECT_EQ(found, (std::set<std::string>{"", "1234", "12345678", "1234" + zeros, zeros + "5678", zeros + zeros}));
}

TEST_F(FlashModelTest, ChangesOfAFolderThatWereNotSyncedComeInAnyCombination) {
  Create("/ffs/a");
  Remove(kFile);
  Create("/ffs/b");
  std::set<std::set<std::string>> found;
  FlashModel(m_before, m_operations).ForEachState([&](const Tree& state, bool atEnd) {
    std::set<std::string> names;
    for (const auto& [path, node] : state) names.insert(path);
    if (atEnd) found.insert(names);
    return true;
  });
  EXPECT_EQ(found.size(), 8u);
}

TEST_F(FlashModelTest, AFolderThatIsLostTakesItsFilesWithIt) {
  m_operations = {{.kind = Kind::MakeDirectory, .path = "/ffs/folder", .file = 9, .mode = 0755},
                  {.kind = Kind::Create, .path = "/ffs/folder/file", .file = kNewId, .mode = 0644},
                  {.kind = Kind::SyncFolder, .path = "/ffs/folder"}};
  bool isLost = false;
  FlashModel(m_before, m_operations).ForEachState([&](const Tree& state, bool atEnd) {
    isLost |= atEnd && !state.contains("/ffs/folder");
    EXPECT_TRUE(state.contains("/ffs/folder") || !state.contains("/ffs/folder/file"));
    return true;
  });
  EXPECT_TRUE(isLost);
}

TEST_F(FlashModelTest, TooManyStatesAreSampledAndAlwaysTheSame) {
  for (int i = 0; i < 13; ++i) Create("/ffs/" + std::to_string(i));
  const FlashModel::Count first = Count();
  const FlashModel::Count second = Count();
  EXPECT_GT(first.different, 2048u);
  EXPECT_EQ(first.states, second.states);
  EXPECT_EQ(first.different, second.different);
}

TEST(FlashExpectation, MissesAFileThatWasThere) {
  const Tree before = {{kFile, {.content = kOld}}};
  EXPECT_FALSE(Expectation(before, before).FaultsOf({}).empty());
}

TEST(FlashExpectation, SeesAChangedMode) {
  const Tree before = {{kFile, {.mode = 0600, .content = kOld}}};
  EXPECT_FALSE(Expectation(before, before).FaultsOf({{kFile, {.mode = 0644, .content = kOld}}}).empty());
}

TEST(FlashExpectation, SeesWhatWasLeftBehind) {
  const Tree before = {{kFile, {.content = kOld}}};
  const Tree after = {{kFile, {.content = kOld}}, {kTemporary, {.content = kNew}}};
  EXPECT_TRUE(Expectation(before, before).FaultsOf(after).empty());
  EXPECT_EQ(Expectation(before, before).StraysOf(after).size(), 1u);
}

TEST(FlashExpectation, AllowsOneStoredCopyToGo) {
  const Tree before = {{"/ffs/blackbox_1_key", {}}, {"/ffs/blackbox_2_key", {}}, {"/ffs/blackbox_3_key", {}}};
  const Tree after = {{"/ffs/blackbox_2_key", {}}, {"/ffs/blackbox_3_key", {}}, {"/ffs/blackbox_4_key", {}}};
  const Expectation expected(before, after);
  EXPECT_TRUE(expected.FaultsOf({{"/ffs/blackbox_2_key", {}}, {"/ffs/blackbox_3_key", {}}}).empty());
  EXPECT_FALSE(expected.FaultsOf({{"/ffs/blackbox_3_key", {}}}).empty());
}

TEST(FlashExpectation, MissesAMovedFileThatIsInNeitherPlace) {
  const Expectation expected({{"/ffs/here", {.content = kOld}}}, {{"/ffs/there", {.content = kOld}}});
  EXPECT_TRUE(expected.FaultsOf({{"/ffs/here", {.content = kOld}}}).empty());
  EXPECT_TRUE(expected.FaultsOf({{"/ffs/there", {.content = kOld}}}).empty());
  EXPECT_FALSE(expected.FaultsOf({}).empty());
}

}  // namespace
}  // namespace flash
