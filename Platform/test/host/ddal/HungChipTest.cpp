// Chips that do not answer.
#include "HungDevice.h"

#include "TestBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <thread>

namespace {

constexpr u32 kHangs = 0x10000;
constexpr u32 kAnswers = 0x10001;

/// Repeats a call until it has a result. @return whether it had, before the test's patience was over
template <typename Call>
bool Becomes(int result, Call call) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (call() != result) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

/// Lets this process open nothing.
class NoFreeDescriptor {
 public:
  NoFreeDescriptor() {
    getrlimit(RLIMIT_NOFILE, &m_before);
    const rlimit none{.rlim_cur = 0, .rlim_max = m_before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  }
  NoFreeDescriptor(const NoFreeDescriptor&) = delete;
  NoFreeDescriptor& operator=(const NoFreeDescriptor&) = delete;
  ~NoFreeDescriptor() { setrlimit(RLIMIT_NOFILE, &m_before); }

 private:
  rlimit m_before{};
};

/// Two chips with a sensor and a fan each.
class HungChipTest : public testing::Test {
 protected:
  HungChipTest() {
    for (const int chip : {0, 1}) {
      m_board.BindChip(chip, "lm75", "3-004" + std::to_string(8 + chip));
      m_board.Show(chip, "temp1_input", std::to_string(20000 + chip));
      m_board.Show(chip, "fan1_input", "3000");
      m_board.Show(chip, "pwm1", "80");
    }
    Describe();
  }

  /// @param more further keys of the first chip's bindings, with a comma
  void Describe(const std::string& more = "") {
    std::string toml;
    for (const std::string number : {"0", "1"}) {
      const std::string at = "chip = 'lm75', at = '3-004" + std::string(number == "0" ? "8'" : "9'");
      const std::string keys = number == "0" ? at + more : at;
      toml += "[[temperature]]\ndevice = 0x1000" + number + "\nhwmon = { " + keys +
              ", input = 'temp1' }\n[[fan]]\nid = " + number + "\nhwmon = { " + keys +
              ", fan = 'fan1', pwm = 'pwm1' }\n";
    }
    m_board.Describe(toml);
  }
  int Read(u32 device) { return ddal_temp_get_curr(device, &m_value); }
  std::filesystem::path File(const char* attribute) const { return m_board.Hwmon(0) / attribute; }
  static std::string Problem() {
    char text[2048] = "?";
    EXPECT_EQ(ddal_init(text, sizeof text), DDAL_ERR_CONFIG);
    return text;
  }
  void PutPipe(const std::filesystem::path& path) {
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  }

  TestBoard m_board;
  int m_value = -77;
};

TEST_F(HungChipTest, AReadThatIsNotAnsweredInTimeIsATimeout) {
  const HungDevice device(File("temp1_input"));
  EXPECT_EQ(Read(kHangs), DDAL_ERR_TIMEOUT);
  EXPECT_EQ(m_value, -77);
}

TEST_F(HungChipTest, TheChipIsBusyUntilItAnswers) {
  HungDevice device(File("temp1_input"));
  ASSERT_EQ(Read(kHangs), DDAL_ERR_TIMEOUT);
  EXPECT_EQ(Read(kHangs), DDAL_ERR_PENDING);
  EXPECT_EQ(ddal_fan_get_rpm(0, &m_value), DDAL_ERR_PENDING);
  device.Answer();
  EXPECT_TRUE(Becomes(DDAL_OK, [this] { return Read(kHangs); }));
  EXPECT_EQ(m_value, 20000);
}

TEST_F(HungChipTest, OtherChipsAreReadMeanwhile) {
  const HungDevice device(File("temp1_input"));
  ASSERT_EQ(Read(kHangs), DDAL_ERR_TIMEOUT);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(Read(kAnswers), DDAL_OK);
  EXPECT_EQ(m_value, 20001);
}

TEST_F(HungChipTest, AnAnswerThatComesBeforeTheDescribedDeadlineIsTaken) {
  Describe(", deadline_ms = 10000");
  HungDevice device(File("temp1_input"));
  std::thread answering([&device] {
    device.AwaitAccess();
    device.Answer();
  });
  EXPECT_EQ(Read(kHangs), DDAL_OK);
  answering.join();
}

TEST_F(HungChipTest, AChipIsNotLateWhileItsThreadLacksAProcessorAlsoWithoutAFreeDescriptor) {
  Describe(", deadline_ms = 200");
  ASSERT_EQ(Read(kHangs), DDAL_OK);
  HungDevice device(File("temp1_input"), true);
  const auto answerLate = [](void* hung) -> void* {
    static_cast<HungDevice*>(hung)->AwaitAccess();
    std::this_thread::sleep_for(std::chrono::milliseconds(400));  // until the deadline is over
    static_cast<HungDevice*>(hung)->Answer();
    return nullptr;
  };
  pthread_t answering;  // a sanitizer needs descriptors to look at a std::thread
  int result = -1;
  {
    const NoFreeDescriptor none;
    ASSERT_EQ(pthread_create(&answering, nullptr, answerLate, &device), 0);
    result = Read(kHangs);
    pthread_join(answering, nullptr);
  }
  EXPECT_EQ(result, DDAL_OK);
}

TEST_F(HungChipTest, ThreadsOfOneChipTakeTurns) {
  ASSERT_EQ(Read(kAnswers), DDAL_OK);
  const auto reads = [](u32 device, int expected) {
    for (int i = 0; i < 2000; ++i) {
      int value = 0;
      EXPECT_EQ(ddal_temp_get_curr(device, &value), DDAL_OK);
      EXPECT_EQ(value, expected);
    }
  };
  Describe();
  std::thread first(reads, kAnswers, 20001), second(reads, kAnswers, 20001), third(reads, kHangs, 20000);
  first.join();
  second.join();
  third.join();
}

TEST_F(HungChipTest, InitNamesTheSensorThatDoesNotAnswerInTheLogToo) {
  const HungDevice device(File("temp1_input"));
  testing::internal::CaptureStderr();
  const std::string problem = Problem();
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string late = "temperature 0x10000: chip \"lm75\" at 3-0048 did not answer within 100 ms";
  EXPECT_NE(problem.find(":1: " + late + " at \"temp1\"; check its wiring"), std::string::npos) << problem;
  EXPECT_NE(log.find(late), std::string::npos) << log;
  EXPECT_EQ(problem.find("0x10001"), std::string::npos) << problem;
}

TEST_F(HungChipTest, InitNamesTheFanThatDoesNotAnswer) {
  Describe(", deadline_ms = 50");
  const HungDevice device(File("pwm1"));
  const std::string problem = Problem();
  EXPECT_NE(problem.find("fan 0: chip \"lm75\" at 3-0048 did not answer within 50 ms at \"pwm1\""), std::string::npos)
      << problem;
}

TEST_F(HungChipTest, AFanThatHangsKeepsNoOtherFromBeingChanged) {
  const HungDevice device(File("pwm1"));
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_TIMEOUT);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_PENDING);
  EXPECT_EQ(ddal_fan_set_pwm(1, 50), DDAL_OK);
}

TEST_F(HungChipTest, ANameThatHangsIsPassedOver) {
  const HungDevice device(File("name"));
  EXPECT_EQ(Read(kHangs), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(Read(kAnswers), DDAL_OK);
}

TEST_F(HungChipTest, APipeInPlaceOfANameIsPassedOver) {
  PutPipe(File("name"));
  EXPECT_EQ(Read(kHangs), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(Read(kAnswers), DDAL_OK);
}

TEST_F(HungChipTest, APipeInPlaceOfASensorIsRefusedAsWhatItIs) {
  PutPipe(File("temp1_input"));
  EXPECT_EQ(Read(kHangs), DDAL_ERR_IO);
  const std::string problem = Problem();
  EXPECT_NE(problem.find("temp1_input cannot be opened: it is a FIFO; "), std::string::npos) << problem;
}

TEST_F(HungChipTest, APipeInPlaceOfAFanIsRefusedAsWhatItIs) {
  PutPipe(File("pwm1"));
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  const std::string problem = Problem();
  EXPECT_NE(problem.find("pwm1 cannot be opened: it is a FIFO; "), std::string::npos) << problem;
}

TEST_F(HungChipTest, APipeInPlaceOfTheFansLockKeepsFansFromBeingChanged) {
  PutPipe(m_board.Folder() / "run/fans.lock");
  testing::internal::CaptureStderr();
  EXPECT_EQ(ddal_fan_set_pwm(1, 50), DDAL_ERR_IO);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("fans.lock: it is a FIFO"), std::string::npos) << log;
}

}  // namespace
