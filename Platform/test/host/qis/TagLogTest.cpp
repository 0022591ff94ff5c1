// Logs of tags that somebody else wrote, or that nobody reads.
#include "AaConfig.h"
#include "AaProWatch.h"
#include "Support.h"
#include "TagFile.h"
#include "TagReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace hwapi::test {
namespace {

constexpr u32 kFirstRecord = qis::TagState{}.end;

i32 Set(const std::string& value) {
  return AaConfigTagPublicSet("app.a", value.data(), static_cast<u32>(value.size()));
}

/// The log of the tag app.a, to write into as one likes.
class TagLog : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Set("1"), 0);
    m_file.Reset(::open(Path().c_str(), O_RDWR | O_CLOEXEC));
  }
  std::string Path() const { return m_board.Run() + "/tags/app.a"; }
  void WriteState(u32 end, u32 newest) const {
    const std::uint64_t number = std::uint64_t{newest} << 32 | end;
    const std::array<std::uint64_t, 2> state{number, ~number};
    ASSERT_EQ(::pwrite(m_file.Get(), state.data(), sizeof state, 0), ssize_t{sizeof state});
  }
  /// @return offset behind the record
  u32 WriteRecord(u32 offset, u32 sequence, const std::string& value) const {
    const std::array<u32, 2> head{static_cast<u32>(value.size()), sequence};
    EXPECT_EQ(::pwrite(m_file.Get(), head.data(), sizeof head, offset), ssize_t{sizeof head});
    const ssize_t size = ::pwrite(m_file.Get(), value.data(), value.size(), off_t{offset} + off_t{sizeof head});
    EXPECT_EQ(size, static_cast<ssize_t>(value.size()));
    return offset + static_cast<u32>(sizeof head + value.size());
  }
  void Resize(std::uint64_t size) const { ASSERT_EQ(::ftruncate(m_file.Get(), static_cast<off_t>(size)), 0); }

  const Board m_board;
  qis::Fd m_file;
};

TEST_F(TagLog, WithAnEndBeyondAllLogsIsNotRead) {
  qis::TagReader reader("app.a");
  Resize(std::uint64_t{1} << 32);
  WriteState(UINT32_MAX, kFirstRecord);
  Peer process([&] { EXPECT_FALSE(reader.Next()); });
  EXPECT_TRUE(process.Ended()) << "it reads for ever";
}

TEST_F(TagLog, WithAnEndBeyondAllLogsIsNotReadByWhoBegins) {
  Resize(std::uint64_t{1} << 32);
  WriteState(UINT32_MAX, kFirstRecord);
  Peer process([] {
    qis::TagReader reader("app.a");
    EXPECT_FALSE(reader.Newest());
    EXPECT_FALSE(reader.Next());
  });
  EXPECT_TRUE(process.Ended()) << "it reads for ever";
}

TEST_F(TagLog, WithAnEndBehindTheFileIsEmpty) {
  WriteState(1000, kFirstRecord);
  EXPECT_EQ(qis::ReadTagState(m_file.Get()).end, kFirstRecord);
}

TEST_F(TagLog, WithItsNewestRecordBehindTheEndIsEmpty) {
  Resize(1000);
  WriteState(kFirstRecord + 9, 100);
  EXPECT_EQ(qis::ReadTagState(m_file.Get()).newest, 0u);
}

TEST_F(TagLog, ThatWasForgedCanBeSet) {
  Resize(std::uint64_t{1} << 32);
  WriteState(UINT32_MAX, UINT32_MAX - 8);
  EXPECT_EQ(Set("2"), 0);
  const auto newest = qis::NewestOfTag("app.a");
  ASSERT_TRUE(newest);
  EXPECT_EQ(newest->value, "2");
}

TEST_F(TagLog, WhoseSequenceDoesNotGrowIsReadNoFurther) {
  qis::TagReader reader("app.a");
  u32 end = WriteRecord(kFirstRecord + 9, 2, "2");
  const u32 newest = end = WriteRecord(end, 0, "");
  end = WriteRecord(end, 3, "forged");
  WriteState(end, newest);
  EXPECT_EQ(reader.Next(), "2");
  EXPECT_FALSE(reader.Next());
}

TEST_F(TagLog, IsReadOnBehindWhatDidNotGrow) {
  qis::TagReader reader("app.a");
  const u32 newest = WriteRecord(kFirstRecord + 9, 0, "");
  const u32 end = WriteRecord(newest, 7, "forged");
  WriteState(end, newest);
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(Set("8"), 0);
  EXPECT_EQ(reader.Next(), "8");
}

TEST_F(TagLog, GoesOnWhenTheSequenceBeginsAgain) {
  WriteRecord(kFirstRecord, UINT32_MAX, "1");
  qis::TagReader reader("app.a");
  for (const char* value : {"2", "3"}) {
    ASSERT_EQ(Set(value), 0);
    EXPECT_EQ(reader.Next(), value);
  }
}

TEST_F(TagLog, AsLongAsALogMayBeIsReplacedThoughSomebodyIsFarBehind) {
  const qis::TagReader reader("app.a");
  const std::string filler(AACONFIG_TAG_MAX_SIZE, ' ');
  while (!std::filesystem::exists(m_board.Run() + "/tags.old/app.a")) ASSERT_EQ(Set(filler), 0);
  m_file.Reset(::open(Path().c_str(), O_RDWR | O_CLOEXEC));
  Resize(qis::kMaxTagLog);
  WriteState(qis::kMaxTagLog - 8, kFirstRecord);
  EXPECT_EQ(Set("last"), 0);
  EXPECT_LT(std::filesystem::file_size(Path()), qis::kLongTagLog);
  EXPECT_EQ(qis::NewestOfTag("app.a")->value, "last");
}

/// What an observer looks at each time it is called.
struct Looks {
  std::atomic<bool> mayGoOn{false};
  std::atomic<int> calls{0};
  std::atomic<bool> observerHangs{false};
};

Looks& TheLooks() {
  static auto* const looks = new Looks;  // observers run until the process ends
  return *looks;
}

void LookWhoHangs(const char*, const void*, u32) {
  Looks& looks = TheLooks();
  EXPECT_TRUE(Eventually([&] { return looks.mayGoOn.load(); }));
  char hanging[AAPRO_NAME_SIZE];
  if (AaProAllAlive(hanging, sizeof hanging) == GLO_FALSE && std::string(hanging) == "tag app.a") {
    looks.observerHangs = true;
  }
  ++looks.calls;
}

TEST_F(TagLog, ObserverThatHasManyValuesToTakeDoesNotHang) {
  constexpr int kValues = 100;
  ASSERT_EQ(AaConfigTagRegister("app.a", &LookWhoHangs), 0);
  for (int i = 1; i < kValues; ++i) ASSERT_EQ(Set("x"), 0);
  TheLooks().mayGoOn = true;
  EXPECT_TRUE(Eventually([] { return TheLooks().calls == kValues; }));
  EXPECT_FALSE(TheLooks().observerHangs);
}

}  // namespace
}  // namespace hwapi::test
