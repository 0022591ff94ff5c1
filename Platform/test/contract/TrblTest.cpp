#include "AaTrbl.h"

#include "AaFile.h"
#include "Rig.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace contract {
namespace {

int Prepare(const char*, const void*) { return EAaTrblCbStatus_Ok; }
int Store(const char*, const void*) { return EAaTrblCbStatus_Ok; }
void Remove(const char*, const void*) {}

i32 Register(const char* name) {
  return AaTrblFileRegister(name, "/ram/file.txt", EAaTrblFilePriority_Normal, 0, Prepare, Store, Remove, nullptr);
}

TEST(TrblFile, IsRegisteredAndTakenOutAgain) {
  EXPECT_EQ(Register("contract-once"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-once"), EAaTrblRet_Ok);
}

TEST(TrblFile, NeedsANameOfItsOwn) {
  EXPECT_EQ(Register("contract-twice"), EAaTrblRet_Ok);
  EXPECT_EQ(Register("contract-twice"), EAaTrblRet_Failed);
  EXPECT_EQ(AaTrblFileUnregister("contract-twice"), EAaTrblRet_Ok);
}

TEST(TrblFile, MayComeBack) {
  EXPECT_EQ(Register("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(Register("contract-back"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-back"), EAaTrblRet_Ok);
}

TEST(TrblFile, ThatIsUnknownCannotBeTakenOut) { EXPECT_EQ(AaTrblFileUnregister("contract-none"), EAaTrblRet_Failed); }

TEST(TrblFile, IsTakenOutOnce) {
  EXPECT_EQ(Register("contract-gone"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-gone"), EAaTrblRet_Ok);
  EXPECT_EQ(AaTrblFileUnregister("contract-gone"), EAaTrblRet_Failed);
}

TEST(TrblFile, NeedsANameAndAPath) {
  const std::string longName(AATRBL_MAX_NAME + 1, 'n');
  for (const char* name : {static_cast<const char*>(nullptr), "", longName.c_str()}) {
    EXPECT_EQ(Register(name), EAaTrblRet_Failed);
  }
  EXPECT_EQ(AaTrblFileRegister("contract-nowhere", "", EAaTrblFilePriority_Low, 0, Prepare, Store, Remove, nullptr),
            EAaTrblRet_Failed);
}

/// Registers files of one test, answers their callbacks and keeps what a collector saw of them.
class TrblCollection : public testing::Test {
 protected:
  struct Seen {
    std::string name;
    EAaTrblCollect result;
    std::string content;
    bool operator==(const Seen&) const = default;
  };

  ~TrblCollection() override {
    for (const std::string& name : m_names) AaTrblFileUnregister(name.c_str());
  }

  /// @return path of a file with that content
  static std::string Write(const std::string& name, const std::string& content) {
    const std::string path = rig::Directory() + "/" + name;
    TAaFile* const file = AaFileOpen(path.c_str(), "w");
    AaFileWrite(content.data(), 1, static_cast<u32>(content.size()), file);
    AaFileClose(file);
    return path;
  }

  void Offer(const std::string& name, const std::string& path, int prepared = EAaTrblCbStatus_Ok,
             EAaTrblFilePriority priority = EAaTrblFilePriority_Low) {
    m_prepared = prepared;
    ASSERT_EQ(AaTrblFileRegister(name.c_str(), path.c_str(), priority, 0, Prepared, Stored, Remove, this),
              EAaTrblRet_Ok);
    m_names.push_back(name);
  }

  std::vector<Seen> Collect() {
    EXPECT_EQ(AaTrblCollect(20'000, See, this), EAaTrblRet_Ok);
    return m_seen;
  }

  TBoolean m_copied = GLO_TRUE;
  std::vector<std::string> m_stored;

 private:
  static TrblCollection& Of(const void* context) { return *static_cast<TrblCollection*>(const_cast<void*>(context)); }
  static int Prepared(const char*, const void* context) { return Of(context).m_prepared; }
  static int Stored(const char* name, const void* context) {
    Of(context).m_stored.emplace_back(name);
    return EAaTrblCbStatus_Ok;
  }
  static TBoolean See(const SAaTrblFile* file, void* context) {
    char text[64];
    const ssize_t size = file->content >= 0 ? read(file->content, text, sizeof text) : 0;
    Of(context).m_seen.push_back(
        {file->name, file->result, std::string(text, size > 0 ? static_cast<std::size_t>(size) : 0)});
    return Of(context).m_copied;
  }

  int m_prepared = EAaTrblCbStatus_Ok;
  std::vector<std::string> m_names;
  std::vector<Seen> m_seen;
};

TEST_F(TrblCollection, HandsTheContentOver) {
  Offer("collected", Write("collected", "the text"));
  EXPECT_EQ(Collect(), (std::vector<Seen>{{"collected", EAaTrblCollect_Ok, "the text"}}));
}

TEST_F(TrblCollection, TellsTheFileThatItWasCopied) {
  Offer("copied", Write("copied", "x"));
  Collect();
  EXPECT_EQ(m_stored, std::vector<std::string>{"copied"});
}

TEST_F(TrblCollection, TellsNothingToAFileThatWasNotCopied) {
  m_copied = GLO_FALSE;
  Offer("not copied", Write("not-copied", "x"));
  Collect();
  EXPECT_TRUE(m_stored.empty());
}

TEST_F(TrblCollection, SaysThatAFileIsNotReady) {
  Offer("unready", Write("unready", "x"), EAaTrblCbStatus_NotReady);
  EXPECT_EQ(Collect(), (std::vector<Seen>{{"unready", EAaTrblCollect_NotReady, ""}}));
  EXPECT_TRUE(m_stored.empty());
}

TEST_F(TrblCollection, SaysThatAFileCouldNotBePrepared) {
  Offer("failed", Write("failed", "x"), EAaTrblCbStatus_Failed);
  EXPECT_EQ(Collect(), (std::vector<Seen>{{"failed", EAaTrblCollect_Failed, ""}}));
}

TEST_F(TrblCollection, SaysThatAFileIsNotThere) {
  Offer("absent", rig::Directory() + "/absent");
  EXPECT_EQ(Collect(), (std::vector<Seen>{{"absent", EAaTrblCollect_NoFile, ""}}));
}

TEST_F(TrblCollection, BeginsWithWhatIsUrgent) {
  const std::string path = Write("order", "");
  Offer("low", path);
  Offer("first", path, EAaTrblCbStatus_Ok, EAaTrblFilePriority_High);
  Offer("second", path, EAaTrblCbStatus_Ok, EAaTrblFilePriority_High);
  std::vector<std::string> order;
  for (const Seen& seen : Collect()) order.push_back(seen.name);
  EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "low"}));
}

}  // namespace
}  // namespace contract
