// The file of the simulated hardware, when somebody else lays hands on it.
#include "Simulator.h"

#include "TestBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_sim.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <fcntl.h>
#include <thread>

namespace {

constexpr u32 kDevice = 0x10000;

class SimFileTest : public testing::Test {
 protected:
  SimFileTest() {
    m_board.Describe(
        "[[temperature]]\ndevice = 0x10000\nsim = { base = 41.5 }\n[[fan]]\nid = 0\nsim = { max_rpm = 6000 }\n");
  }

  std::filesystem::path File() const { return m_board.Folder() / "run/hardware"; }
  void Cut(off_t size) const { ASSERT_EQ(truncate(File().c_str(), size), 0); }
  static std::string Problem() {
    char text[512] = "";
    EXPECT_EQ(ddal_init(text, sizeof text), DDAL_ERR_CONFIG);
    return text;
  }

  TestBoard m_board;
  int m_value = -77;
};

TEST_F(SimFileTest, AReadOfAFileThatWasCutFailsAndSetsItUpAgain) {
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  ASSERT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK);
  for (const off_t size : {0, 1, 4, 100}) {
    Cut(size);
    EXPECT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_ERR_IO) << size;
    EXPECT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK) << size;
    EXPECT_EQ(m_value, 41500) << size;
  }
}

TEST_F(SimFileTest, AWriteToAFileThatWasCutFailsAndSetsItUpAgain) {
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  Cut(0);
  EXPECT_EQ(ddal_sim_fan_rpm_set(0, 1234), DDAL_ERR_IO);
  EXPECT_EQ(ddal_sim_fan_rpm_set(0, 1234), DDAL_OK);
  EXPECT_EQ(ddal_fan_get_rpm(0, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 1234);
}

TEST_F(SimFileTest, AFileOfZeroesIsSetUpAgain) {
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  const auto size = static_cast<off_t>(std::filesystem::file_size(File()));
  Cut(0);
  Cut(size);
  EXPECT_EQ(ddal_fan_get_rpm(0, &m_value), DDAL_ERR_IO);
  EXPECT_EQ(ddal_fan_get_rpm(0, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 6000);
}

TEST_F(SimFileTest, NobodyDiesWhileTheFileIsCutAgainAndAgain) {
  const Simulator other([] {
    std::thread([] {
      for (;;) ddal_sim_temp_set(kDevice, 5000);
    }).detach();
    return true;
  });
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  for (int i = 0; i < 2000; ++i) {
    if (i % 10 == 0) Cut(0);
    const int error = ddal_temp_get_curr(kDevice, &m_value);
    ASSERT_TRUE(error == DDAL_OK || error == DDAL_ERR_IO) << error;
    ASSERT_EQ(ddal_fan_set_pwm(0, 50) & ~DDAL_ERR_IO, 0);
  }
  EXPECT_TRUE(other.Alive());
  int tries = 1000;  // the other one may be setting it up just now
  while (ddal_temp_get_curr(kDevice, &m_value) != DDAL_OK && --tries > 0) std::this_thread::yield();
  EXPECT_GT(tries, 0);
}

TEST_F(SimFileTest, APipeInItsPlaceIsRefusedAsWhatItIs) {
  ASSERT_EQ(mkfifo(File().c_str(), 0600), 0);
  const std::string problem = Problem();
  EXPECT_NE(problem.find("run/hardware cannot be used: it is a FIFO; "), std::string::npos) << problem;
  EXPECT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_ERR_IO);
}

TEST_F(SimFileTest, AFolderInItsPlaceIsRefused) {
  std::filesystem::create_directory(File());
  EXPECT_NE(Problem().find("run/hardware cannot be opened: Is a directory; "), std::string::npos);
}

TEST_F(SimFileTest, AProcessThatKeepsTheFileLockedIsNotWaitedForForEver) {
  const int fd = open(File().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(fd, LOCK_EX), 0);
  EXPECT_NE(Problem().find("run/hardware is locked: the process that has it does not let go of it; "),
            std::string::npos);
  close(fd);
}

}  // namespace
