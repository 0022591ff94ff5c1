// An access that is taken back while the device's thread takes steps of its own.
#include "AccessState.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace {

using namespace hwapi::ddal;

/// A state of which the thread takes a step right before each of the caller's.
class Contended {
 public:
  /// @param states that the thread has left it in when the caller looks, tries first, tries again, ...
  Contended(std::initializer_list<std::uint32_t> states) : m_states(states) {}

  std::uint32_t load() { return Step(); }
  bool compare_exchange_strong(std::uint32_t& expected, std::uint32_t desired) {
    const bool as = Step() == expected;
    (as ? m_state : expected) = as ? desired : m_state;
    return as;
  }
  std::uint32_t State() const { return m_state; }

 private:
  std::uint32_t Step() {
    if (m_steps < m_states.size()) m_state = m_states[m_steps++];
    return m_state;
  }

  const std::vector<std::uint32_t> m_states;
  std::size_t m_steps = 0;
  std::uint32_t m_state = kIdle;
};

TEST(AccessStateTest, AnAccessThatWaitsIsNotBegun) {
  Contended state{kPosted};
  EXPECT_EQ(TakeBack(state), kPosted);
  EXPECT_EQ(state.State(), kIdle);
}

TEST(AccessStateTest, AnAccessThatRunsIsTheThreads) {
  Contended state{kRunning};
  EXPECT_EQ(TakeBack(state), kRunning);
  EXPECT_EQ(state.State(), kLate);
}

TEST(AccessStateTest, AnAnswerThatIsThereIsTaken) {
  Contended state{kDone};
  EXPECT_EQ(TakeBack(state), kDone);
  EXPECT_EQ(state.State(), kDone);
}

TEST(AccessStateTest, AnAccessThatTheThreadBeginsMeanwhileIsNotAnswered) {
  Contended state{kPosted, kRunning};
  EXPECT_EQ(TakeBack(state), kRunning);
  EXPECT_EQ(state.State(), kLate);
}

TEST(AccessStateTest, AnAccessThatTheThreadEndsMeanwhileIsAnswered) {
  Contended state{kPosted, kRunning, kDone};
  EXPECT_EQ(TakeBack(state), kDone);
  EXPECT_EQ(state.State(), kDone);
}

}  // namespace
