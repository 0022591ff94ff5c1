#include "AaConfig.h"
#include "Rig.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace contract {
namespace {

using Texts = std::vector<std::string>;

/// What observers saw, as "name=value".
class Seen {
 public:
  void Add(const char* name, const void* value, u32 size) {
    const std::lock_guard lock(m_mutex);
    m_texts.push_back(std::string(name) + "=" + std::string(static_cast<const char*>(value), size));
    m_changed.notify_all();
  }
  /// @return what was seen of a tag, as soon as there is so much of it
  Texts Of(const std::string& tag, std::size_t count) {
    std::unique_lock lock(m_mutex);
    Texts texts;
    m_changed.wait_for(lock, std::chrono::seconds(20), [&] {
      texts = m_texts;
      std::erase_if(texts, [&](const std::string& text) { return !text.starts_with(tag + "="); });
      return texts.size() >= count;
    });
    return texts;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Texts m_texts;
};

Seen& TheSeen() {
  static auto& seen = *new Seen;
  return seen;
}

void Observe(const char* name, const void* value, u32 size) { TheSeen().Add(name, value, size); }
void ObserveAgain(const char* name, const void* value, u32 size) { TheSeen().Add(name, value, size); }
void ObserveAndThrow(const char* name, const void* value, u32 size) {
  TheSeen().Add(name, value, size);
  throw std::runtime_error("an observer that throws");
}
void ObserveText(const char* name, const void* value, u32) {
  const std::string untilZero = static_cast<const char*>(value);
  TheSeen().Add(name, untilZero.data(), static_cast<u32>(untilZero.size()));
}

i32 SetText(const char* name, const std::string& text) {
  return AaConfigTagPublicSet(name, text.data(), static_cast<u32>(text.size()));
}

/// @return the tag as a text; "none" when it has no value
std::string TextOf(const char* name) {
  void* value = nullptr;
  if (AaConfigTagGet(name, &value) != 0 || value == nullptr) return "none";
  const std::string text = static_cast<const char*>(value);
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  return text;
}

TEST(Tag, ThatNobodySetHasNoValue) {
  int unchanged = 0;
  void* value = &unchanged;
  EXPECT_EQ(AaConfigTagGet("contract.unset", &value), ENOENT);
  EXPECT_EQ(value, nullptr);
}

TEST(Tag, ShowsTheTextThatWasSet) {
  EXPECT_EQ(SetText("contract.text", "/ffs/run/file.txt"), 0);
  EXPECT_EQ(TextOf("contract.text"), "/ffs/run/file.txt");
}

TEST(Tag, ShowsTheNewestText) {
  SetText("contract.twice", "a long first text");
  SetText("contract.twice", "short");
  EXPECT_EQ(TextOf("contract.twice"), "short");
}

TEST(Tag, IsACopyThatASetDoesNotChange) {
  SetText("contract.copy", "old");
  void* value = nullptr;
  ASSERT_EQ(AaConfigTagGet("contract.copy", &value), 0);
  SetText("contract.copy", "new");
  EXPECT_STREQ(static_cast<const char*>(value), "old");
  AaMemUnRefDbg(value, __FILE__, __LINE__);
}

TEST(Tag, OfFourBytesIsANumber) {
  const u32 number = 0xFEDCBA98;
  EXPECT_EQ(AaConfigTagPublicSet("contract.number", &number, sizeof number), 0);
  u32 value = 0;
  EXPECT_EQ(AaConfigTagGetU32("contract.number", &value), 0);
  EXPECT_EQ(value, number);
}

TEST(Tag, OfAnotherSizeIsNoNumber) {
  for (const char* text : {"abc", "abcde"}) {
    SetText("contract.nonumber", text);
    u32 value = 5;
    EXPECT_EQ(AaConfigTagGetU32("contract.nonumber", &value), EINVAL);
    EXPECT_EQ(value, 5u);
  }
}

TEST(Tag, ThatNobodySetIsNoNumber) {
  u32 value = 5;
  EXPECT_EQ(AaConfigTagGetU32("contract.unsetnumber", &value), ENOENT);
  EXPECT_EQ(value, 5u);
}

TEST(Tag, NeedsAName) { EXPECT_EQ(SetText("", "text"), EINVAL); }

TEST(Tag, MayHaveNoSlashInItsName) {
  EXPECT_EQ(SetText("contract/slash", "text"), EINVAL);
  EXPECT_EQ(SetText("../escape", "text"), EINVAL);
}

TEST(Tag, MayHaveTheLargestSize) {
  const std::string text(AACONFIG_TAG_MAX_SIZE, 'x');
  EXPECT_EQ(SetText("contract.large", text), 0);
  EXPECT_EQ(TextOf("contract.large"), text);
}

TEST(Tag, MayNotBeLarger) {
  EXPECT_EQ(SetText("contract.toolarge", std::string(AACONFIG_TAG_MAX_SIZE + 1, 'x')), EINVAL);
  EXPECT_EQ(TextOf("contract.toolarge"), "none");
}

TEST(Tag, ReleasesNullHarmlessly) { AaMemUnRefDbg(nullptr, __FILE__, __LINE__); }

TEST(TagObserver, IsCalledOnceForAValueThatIsThere) {
  SetText("contract.there", "before");
  EXPECT_EQ(AaConfigTagRegister("contract.there", Observe), 0);
  SetText("contract.there", "after");
  EXPECT_EQ(TheSeen().Of("contract.there", 2), (Texts{"contract.there=before", "contract.there=after"}));
}

TEST(TagObserver, IsCalledForEachSetInOrder) {
  EXPECT_EQ(AaConfigTagRegister("contract.order", Observe), 0);
  Texts expected;
  for (int i = 0; i < 50; ++i) {
    SetText("contract.order", std::to_string(i));
    expected.push_back("contract.order=" + std::to_string(i));
  }
  EXPECT_EQ(TheSeen().Of("contract.order", expected.size()), expected);
}

TEST(TagObserver, IsCalledForTheSameValueAgain) {
  EXPECT_EQ(AaConfigTagRegister("contract.same", Observe), 0);
  SetText("contract.same", "x");
  SetText("contract.same", "x");
  EXPECT_EQ(TheSeen().Of("contract.same", 2).size(), 2u);
}

TEST(TagObserver, IsNotAloneWithItsTag) {
  EXPECT_EQ(AaConfigTagRegister("contract.two", Observe), 0);
  EXPECT_EQ(AaConfigTagRegister("contract.two", ObserveAgain), 0);
  SetText("contract.two", "x");
  EXPECT_EQ(TheSeen().Of("contract.two", 2), (Texts{"contract.two=x", "contract.two=x"}));
}

TEST(TagObserver, IsCalledOnlyForItsTag) {
  EXPECT_EQ(AaConfigTagRegister("contract.mine", Observe), 0);
  SetText("contract.mine.not", "x");
  SetText("contract.mine", "y");
  EXPECT_EQ(TheSeen().Of("contract.mine", 1), Texts{"contract.mine=y"});
  EXPECT_EQ(TheSeen().Of("contract.mine.not", 0), Texts{});
}

TEST(TagObserver, ThatThrowsIsCalledAgain) {
  EXPECT_EQ(AaConfigTagRegister("contract.throws", ObserveAndThrow), 0);
  SetText("contract.throws", "1");
  SetText("contract.throws", "2");
  EXPECT_EQ(TheSeen().Of("contract.throws", 2), (Texts{"contract.throws=1", "contract.throws=2"}));
}

TEST(TagObserver, ThatThrowsDoesNotStopAnother) {
  EXPECT_EQ(AaConfigTagRegister("contract.beside", ObserveAndThrow), 0);
  EXPECT_EQ(AaConfigTagRegister("contract.beside", Observe), 0);
  SetText("contract.beside", "x");
  EXPECT_EQ(TheSeen().Of("contract.beside", 2).size(), 2u);
}

TEST(TagObserver, GetsItsValueFollowedByAZero) {
  EXPECT_EQ(AaConfigTagRegister("contract.zero", ObserveText), 0);
  SetText("contract.zero", "text");
  EXPECT_EQ(TheSeen().Of("contract.zero", 1), Texts{"contract.zero=text"});
}

TEST(Rad, HasTheValueOfTheBoard) { EXPECT_EQ(AaConfigRadGetValue(rig::kRad), rig::kRadValue); }

TEST(Rad, ThatIsUnsetIsZero) { EXPECT_EQ(AaConfigRadGetValue(rig::kUnsetRad), 0u); }

}  // namespace
}  // namespace contract
