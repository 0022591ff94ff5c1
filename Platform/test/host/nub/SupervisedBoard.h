/// @file
/// The supervisor of a service, and boards on which it expects signs of life.
#pragma once

#include "AaSysTime.h"
#include "ServiceProcess.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>

/// A supervisor that listens.
class Supervisor {
 public:
  /// @param name a path, or "@" and an abstract name
  explicit Supervisor(const std::string& name) : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    if (name[0] == '@') address.sun_path[0] = '\0';
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size), 0);
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
  }
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  ~Supervisor() { close(m_socket); }

  /// @return the next notice
  std::string Notice() const { return Receive(0); }
  /// @return whether a notice is there already
  bool Told() const { return !Receive(MSG_DONTWAIT | MSG_PEEK).empty(); }

 private:
  std::string Receive(int flags) const {
    char text[256];
    const ssize_t size = recv(m_socket, text, sizeof text, flags);
    return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : std::string();
  }

  const int m_socket;
};

class SupervisorTest : public testing::Test {
 protected:
  SupervisorTest() { m_board.Describe(""); }
  std::string Path() const { return m_board.Folder() / "notify"; }

  TestBoard m_board;
};

/// A board whose clock stands still unless the test moves it, and a supervisor that expects a sign of life every
/// second.
class SignOfLifeTest : public SupervisorTest {
 protected:
  static constexpr u32 kAsk = 0x1000;

  SignOfLifeTest() {
    m_board.Describe("[clock]\nspeed = 0\nstart = 2024-06-15T12:00:00Z\n");
    setenv("WATCHDOG_USEC", "2000000", 1);
  }
  /// @param ms since the clock was made, less than an hour
  static void SetClock(u32 ms) {
    const SAaTime time{.year = 2024,
                       .month = 6,
                       .day = 15,
                       .hour = 12,
                       .minute = ms / 60'000,
                       .second = ms / 1000 % 60,
                       .millisec = ms % 1000};
    EXPECT_EQ(AaUtcTimeSet(&time), 0);
  }
};
