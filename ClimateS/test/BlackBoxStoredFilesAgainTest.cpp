/// Stored copies of earlier runs, and which names are those of stored copies.
#include "StoredFiles.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kName = "registerSelfTestFiles(): ";

/// A black box that knows no copy, and some on the flash.
class BlackBoxStoredFilesAgainTest : public StoredFilesTest {
 protected:
  /// Puts entries into the lifedata directory and lets the black box look.
  void Find(const std::vector<std::string>& names) {
    for (const std::string& name : names) fake::SetFile(kLifedata + name, "kept");
    m_blackBox.registerSelfTestFiles();
  }
};

TEST_F(BlackBoxStoredFilesAgainTest, AreStoredUnderTheKeyBehindTheTime) {
  Find({"blackbox_20160101000000_a_b"});
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackboxData::" + kName + "file '" + kLifedata +
                                                             "blackbox_20160101000000_a_b' stored with key 'a_b'"),
                                            Line(kInfo, "BlackboxData::" + kName +
                                                            "file 'blackbox_20160101000000_a_b' registered with "
                                                            "path '" +
                                                            kLifedata + "blackbox_20160101000000_a_b'")));
}

TEST_F(BlackBoxStoredFilesAgainTest, AreRegistered) {
  Find({Name(1)});
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"),
              ElementsAre(fake::Call("AaTrblFileRegister", Name(1), Path(1), EAaTrblFilePriority_Low, 0)));
  EXPECT_EQ(fake::TrblFiles().back().prepare, techlogPrepareFileCb);
}

TEST_F(BlackBoxStoredFilesAgainTest, AreFoundAtTheEndOfTheInitialization) {
  fake::SetFile(Path(1), "kept");
  for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  EXPECT_EQ(m_blackBox.init(EUnitType_Kel), 1u);
  EXPECT_EQ(fake::LogLines().back().text,
            "BlackboxData::" + kName + "file '" + Name(1) + "' registered with path '" + Path(1) + "'");
}

/// An entry that is no stored copy.
class OtherEntryTest : public BlackBoxStoredFilesAgainTest, public testing::WithParamInterface<const char*> {};

TEST_P(OtherEntryTest, IsPassedOver) {
  Find({GetParam()});
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"), IsEmpty());
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, OtherEntryTest,
                         testing::Values("blackbox_notes", "blackbox_my_notes", "blackbox_my-notes_a.b",
                                         "blackbox_20160101000000", "blackbox", "blackbox_", "blackbox__",
                                         "old_blackbox_20160101000000_a", "Blackbox_20160101000000_a",
                                         "20160101000000_a"));

/// An entry that counts as a stored copy, odd as it looks.
struct OddEntry {
  const char* name;
  const char* key;
};

class OddEntryTest : public BlackBoxStoredFilesAgainTest, public testing::WithParamInterface<OddEntry> {};

TEST_P(OddEntryTest, HasTheKeyBehindTheSecondUnderscore) {
  Find({GetParam().name});
  EXPECT_EQ(fake::LogLines().front().text, "BlackboxData::" + kName + "file '" + kLifedata + GetParam().name +
                                               "' stored with key '" + GetParam().key + "'");
}

INSTANTIATE_TEST_SUITE_P(Names, OddEntryTest,
                         testing::Values(OddEntry{"blackbox_notes_1", "1"}, OddEntry{"blackbox_2016_", ""},
                                         OddEntry{"blackbox__9", "9"}, OddEntry{"blackbox_0_x", "x"},
                                         OddEntry{"blackbox_20160101000000__a", "_a"}));

TEST_F(BlackBoxStoredFilesAgainTest, AreTakenInTheOrderOfTheirPaths) {
  Find({"blackbox_3_a", "blackbox_1_b", "blackbox_2_a"});
  EXPECT_TRUE(fake::CalledInOrder({{"AaTrblFileRegister", "blackbox_1_b"},
                                   {"AaTrblFileRegister", "blackbox_2_a"},
                                   {"AaTrblFileRegister", "blackbox_3_a"}}));
}

TEST_F(BlackBoxStoredFilesAgainTest, AreAllKept) {
  Find({Name(1), Name(2), Name(3), Name(4), Name(5)});
  EXPECT_THAT(StoredNames(), ElementsAre(Name(1), Name(2), Name(3), Name(4), Name(5)));
}

TEST_F(BlackBoxStoredFilesAgainTest, AreTrimmedByTheNextStoreOldestFirst) {
  Find({Name(1), Name(2), Name(3), Name(4)});
  fake::AdvanceTime(4'000'000);
  EXPECT_EQ(Store(2), 1u);
  EXPECT_THAT(StoredPaths(), ElementsAre(Path(3), Path(4), Path(5)));
}

TEST_F(BlackBoxStoredFilesAgainTest, AFailedRegistrationIsAnError) {
  fake::FailCall("AaTrblFileRegister", 1, 3);
  Find({Name(1)});
  EXPECT_EQ(fake::LogLines().back(),
            Line(kError, "BlackBoxData::" + kName + "Failed to register file '" + Name(1) + "' to AaTrbl, ret=3"));
}

TEST_F(BlackBoxStoredFilesAgainTest, AnUnregisteredOneIsStillAStoredFile) {
  fake::FailCall("AaTrblFileRegister");
  Find({Name(1), Name(2)});
  EXPECT_TRUE(m_blackBox.isStoredFile(Name(1)));
  EXPECT_THAT(StoredNames(), ElementsAre(Name(2)));
}

TEST_F(BlackBoxStoredFilesAgainTest, TheListingIsReleasedAtTheEnd) {
  Find({Name(1), Name(2)});
  const std::vector<fake::Call> calls = fake::Calls();
  EXPECT_EQ(calls.front(), fake::Call("AaFileListDir", kLifedata));
  EXPECT_EQ(calls.back(), fake::Call("AaFileFreeListDirArray", 3));  // the configuration file too
}

TEST_F(BlackBoxStoredFilesAgainTest, WithoutAListingNothingHappens) {
  fake::SetFile(Path(1), "kept");
  fake::FailCall("AaFileListDir");
  m_blackBox.registerSelfTestFiles();
  EXPECT_THAT(fake::Calls(), ElementsAre(fake::Call("AaFileListDir", kLifedata)));
}

TEST_F(BlackBoxStoredFilesAgainTest, OfAnEmptyDirectoryThereAreNone) {
  fake::RemoveAll(kConfigFile);
  m_blackBox.registerSelfTestFiles();
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

/// Whether a name is that of a stored copy.
class IsStoredFileTest : public StoredFilesTest {
 protected:
  IsStoredFileTest() { StoreTimes(1); }
};

TEST_F(IsStoredFileTest, ForAStoredCopyIsTrue) { EXPECT_TRUE(m_blackBox.isStoredFile(Name(1))); }

TEST_F(IsStoredFileTest, ForEveryCopyOfAKeyIsTrue) {
  StoreTimes(2);
  for (unsigned i = 1; i <= 3; ++i) EXPECT_TRUE(m_blackBox.isStoredFile(Name(i))) << i;
}

TEST_F(IsStoredFileTest, ForAnotherTimeIsFalse) { EXPECT_FALSE(m_blackBox.isStoredFile(Name(2))); }

TEST_F(IsStoredFileTest, ForAnotherKeyIsFalse) {
  EXPECT_FALSE(m_blackBox.isStoredFile("blackbox_20160307140509_selftest"));
}

TEST_F(IsStoredFileTest, ForAPathIsFalse) { EXPECT_FALSE(m_blackBox.isStoredFile(Path(1))); }

TEST_F(IsStoredFileTest, WithoutThePrefixIsFalse) {
  EXPECT_FALSE(m_blackBox.isStoredFile("x" + Name(1)));
  EXPECT_FALSE(m_blackBox.isStoredFile("20160307140509_selftest.txt"));
}

TEST_F(IsStoredFileTest, WithoutASecondUnderscoreIsFalse) {
  m_blackBox.copyFile(2, kSource.c_str(), "x");
  EXPECT_FALSE(m_blackBox.isStoredFile("blackbox_x"));
}

TEST_F(IsStoredFileTest, ForTheEmptyNameIsFalse) { EXPECT_FALSE(m_blackBox.isStoredFile("")); }

/// Keys may contain "/", so that a copy lies in a directory and bears a name that looks like another key's.
class KeyWithPathTest : public StoredFilesTest {
 protected:
  static constexpr const char* kLookalike = "blackbox_1_k";

  /// Stores a copy whose key begins so and whose name without its path is the lookalike.
  void StoreLookalike(const std::string& beginning) {
    const std::string key = beginning + "/" + kLookalike;
    fake::MakeDir(kLifedata + "blackbox_20160307140509_" + beginning);
    EXPECT_EQ(m_blackBox.copyFile(2, kSource.c_str(), key.c_str()), 1u);
  }
  void StoreSameKey() { EXPECT_EQ(m_blackBox.copyFile(2, kSource.c_str(), "k"), 1u); }
};

TEST_F(KeyWithPathTest, IsRegisteredUnderTheNameWithoutPath) {
  StoreLookalike("z");
  EXPECT_EQ(fake::TrblFiles().back().name, kLookalike);
}

TEST_F(KeyWithPathTest, IsFoundFromTheFirstEntryOfTheKeyToTheEndOfAll) {
  StoreSameKey();
  StoreLookalike("z");
  EXPECT_TRUE(m_blackBox.isStoredFile(kLookalike));
}

TEST_F(KeyWithPathTest, IsNotFoundBeforeTheFirstEntryOfTheKey) {
  StoreSameKey();
  StoreLookalike("a");
  EXPECT_FALSE(m_blackBox.isStoredFile(kLookalike));
}

TEST_F(KeyWithPathTest, IsNotFoundWithoutAnEntryOfTheKey) {
  StoreLookalike("z");
  EXPECT_FALSE(m_blackBox.isStoredFile(kLookalike));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
