#include "Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

/// A value that counts how many of its kind there are, and whose next copy can be told to fail.
struct Counted {
  Counted() { ++alive; }
  Counted(const Counted& other) : number(other.number) {
    if (failNextCopy) {
      failNextCopy = false;
      throw std::bad_alloc();
    }
    ++alive;
  }
  Counted& operator=(const Counted&) = default;
  ~Counted() { --alive; }

  int number = 0;
  static inline int alive = 0;
  static inline bool failNextCopy = false;
};

bool Add(Published<Counted>& value, int number) {
  return value.Update([number](Counted& counted) {
    counted.number += number;
    return true;
  });
}

TEST(PublishedTest, BeginsWithTheValueOfItsType) {
  const Published<std::string> text;
  EXPECT_EQ(*text.Read(), "");
  EXPECT_EQ(Published<int>().Read().operator*(), 0);
}

TEST(PublishedTest, AnUpdateIsReadAfterwards) {
  Published<std::string> text;
  text.Update([](std::string& value) {
    value = "one";
    return true;
  });
  EXPECT_EQ(*text.Read(), "one");
}

TEST(PublishedTest, AnUpdateGetsACopyOfTheNewestValue) {
  Published<Counted> value;
  for (int number = 1; number <= 4; ++number) EXPECT_TRUE(Add(value, number));
  EXPECT_EQ(value.Read()->number, 10);
}

TEST(PublishedTest, ASetReplacesWhateverThereIs) {
  Published<std::string> text;
  text.Set("one");
  text.Set("two");
  EXPECT_EQ(*text.Read(), "two");
}

TEST(PublishedTest, AReaderKeepsTheValueThatItFound) {
  Published<std::string> text;
  text.Set("one");
  const auto reader = text.Read();
  text.Set("two");
  text.Set("three");
  EXPECT_EQ(*reader, "one");
  EXPECT_EQ(reader->size(), 3u);
  EXPECT_EQ(*text.Read(), "three");
}

TEST(PublishedTest, AChangeThatSaysNoPublishesNothing) {
  Published<std::string> text;
  text.Set("one");
  EXPECT_FALSE(text.Update([](std::string& value) {
    value = "two";
    return false;
  }));
  EXPECT_EQ(*text.Read(), "one");
}

TEST(PublishedTest, AChangeIsRepeatedOnTheNewerValueWhenAnotherOneCameFirst) {
  Published<std::string> text;
  int calls = 0;
  EXPECT_TRUE(text.Update([&](std::string& value) {
    if (++calls == 1) text.Set("other");
    value += "+mine";
    return true;
  }));
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(*text.Read(), "other+mine");
}

TEST(PublishedTest, AChangeIsRepeatedAsOftenAsAnotherOneComesFirst) {
  Published<Counted> value;
  int calls = 0;
  value.Update([&](Counted& counted) {
    if (++calls <= 5) Add(value, 10);
    counted.number += 1;
    return true;
  });
  EXPECT_EQ(calls, 6);
  EXPECT_EQ(value.Read()->number, 51);
}

TEST(PublishedTest, ARepeatedChangeMaySayNo) {
  Published<std::string> text;
  EXPECT_FALSE(text.Update([&](std::string& value) {
    if (!value.empty()) return false;
    text.Set("other");
    value = "mine";
    return true;
  }));
  EXPECT_EQ(*text.Read(), "other");
}

TEST(PublishedTest, WhatAChangeThrowsLeavesEverythingAsItWas) {
  Published<Counted> value;
  Add(value, 3);
  EXPECT_THROW(value.Update([](Counted& counted) -> bool {
    counted.number = 99;
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_EQ(value.Read()->number, 3);
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, ACopyThatFailsLeavesEverythingAsItWas) {
  Published<Counted> value;
  Add(value, 3);
  Counted::failNextCopy = true;
  EXPECT_THROW(Add(value, 1), std::bad_alloc);
  EXPECT_EQ(value.Read()->number, 3);
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, AfterAFailureTheNextUpdateWorks) {
  Published<Counted> value;
  Counted::failNextCopy = true;
  EXPECT_THROW(Add(value, 1), std::bad_alloc);
  EXPECT_TRUE(Add(value, 2));
  EXPECT_EQ(value.Read()->number, 2);
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, OldVersionsAreFreedAtOnceWithoutReaders) {
  Published<Counted> value;
  for (int i = 0; i < 100; ++i) {
    Add(value, 1);
    EXPECT_EQ(Counted::alive, 1);
  }
}

TEST(PublishedTest, TheCopyOfAChangeThatSaidNoIsFreed) {
  Published<Counted> value;
  value.Update([](Counted&) { return false; });
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, VersionsStayWhileThereIsAReader) {
  Published<Counted> value;
  const auto reader = value.Read();
  for (int i = 0; i < 3; ++i) Add(value, 1);
  EXPECT_EQ(Counted::alive, 4);
  EXPECT_EQ(reader->number, 0);
}

TEST(PublishedTest, TheFirstUpdateWithoutAReaderFreesWhatReadersKept) {
  Published<Counted> value;
  {
    const auto reader = value.Read();
    for (int i = 0; i < 3; ++i) Add(value, 1);
  }
  EXPECT_EQ(Counted::alive, 4);
  Add(value, 1);
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, VersionsStayUntilTheLastReaderIsGone) {
  Published<Counted> value;
  auto first = std::make_unique<Published<Counted>::Reader>(value);
  const auto second = value.Read();
  Add(value, 1);
  first.reset();
  Add(value, 1);
  EXPECT_EQ(second->number, 0);
  EXPECT_EQ(Counted::alive, 3);
}

TEST(PublishedTest, VersionsOfARepeatedChangeAreFreed) {
  Published<Counted> value;
  int calls = 0;
  value.Update([&](Counted&) {
    if (++calls <= 3) Add(value, 1);
    return true;
  });
  EXPECT_EQ(Counted::alive, 1);
}

TEST(PublishedTest, ItsEndFreesEveryVersion) {
  {
    Published<Counted> value;
    const auto reader = std::make_unique<Published<Counted>::Reader>(value);
    for (int i = 0; i < 3; ++i) Add(value, 1);
  }
  EXPECT_EQ(Counted::alive, 0);
}

/// Two numbers that are always equal in a whole version.
struct Pair {
  unsigned one = 0;
  unsigned other = 0;
  std::string text = std::string(64, 'x');  // makes the memory of a freed version change
};

TEST(PublishedTest, NoUpdateOfSeveralThreadsIsLost) {
  constexpr unsigned kThreads = 4;
  constexpr unsigned kUpdates = 2000;
  Published<Pair> pair;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&pair] {
      for (unsigned update = 0; update < kUpdates; ++update) {
        pair.Update([](Pair& value) {
          ++value.one;
          ++value.other;
          return true;
        });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(pair.Read()->one, kThreads * kUpdates);
}

TEST(PublishedTest, ReadersOnlyEverSeeWholeVersions) {
  constexpr unsigned kUpdates = 2000;
  Published<Pair> pair;
  const auto change = [&pair] {
    for (unsigned update = 0; update < kUpdates; ++update) {
      pair.Update([](Pair& value) {
        ++value.one;
        ++value.other;
        return true;
      });
    }
  };
  unsigned torn = 0;
  std::thread first(change);
  std::thread second(change);
  for (unsigned i = 0; i < kUpdates; ++i) {
    const auto reader = pair.Read();
    if (reader->one != reader->other || reader->text != std::string(64, 'x')) ++torn;
  }
  first.join();
  second.join();
  EXPECT_EQ(torn, 0u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
