#include "Support.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

namespace hwapi::test {
namespace {

constexpr std::chrono::seconds kLong{20};

}  // namespace

Board::Board(const std::string& extra, const std::string& subfolders) {
  std::string folder = std::filesystem::temp_directory_path() / "qis-XXXXXX";
  m_folder = ::mkdtemp(folder.data());
  m_run = m_folder + "/" + subfolders + "run";
  std::filesystem::create_directories(m_run);
  const std::string description = m_folder + "/board.toml";
  std::ofstream(description) << "[unit]\ntype = \"Kel\"\nversion = \"Kela\"\nproduct_code = \"1\"\n"
                                "serial_number = \"2\"\n[node]\nboard = 1\ncpu = 2\n"
                             << extra;
  ::setenv("HWAPI_RUN", m_run.c_str(), 1);
  ::setenv("HWAPI_BOARD", description.c_str(), 1);
}

Board::~Board() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

Event::Event() { EXPECT_EQ(::pipe(m_ends), 0); }

void Event::Happened() const { EXPECT_EQ(::write(m_ends[1], "x", 1), 1); }

bool Event::Await() const {
  pollfd watched{.fd = m_ends[0], .events = POLLIN, .revents = 0};
  char byte = 0;
  return ::poll(&watched, 1, std::chrono::milliseconds(kLong).count()) == 1 && ::read(m_ends[0], &byte, 1) == 1;
}

Peer::Peer(const std::function<void()>& program) : m_pid(::fork()) {
  if (m_pid == 0) {
    program();
    ::_exit(::testing::Test::HasFailure() ? 1 : 0);
  }
}

Peer::~Peer() { Kill(); }

void Peer::Kill() {
  if (m_pid > 0) {
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = 0;
  }
}

bool Peer::Ended() {
  int status = -1;
  const bool ended = Eventually([&] { return ::waitpid(m_pid, &status, WNOHANG) == m_pid; });
  if (ended) {
    m_pid = 0;
  }
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool Peer::IsStopped() const {
  int status = 0;
  return Eventually([&] { return ::waitpid(m_pid, &status, WNOHANG | WUNTRACED) == m_pid; }) && WIFSTOPPED(status);
}

bool Eventually(const std::function<bool()>& isTrue) {
  const auto end = std::chrono::steady_clock::now() + kLong;
  while (!isTrue()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

ErrorOutput::ErrorOutput() : m_file(::memfd_create("stderr", MFD_CLOEXEC)), m_before(::dup(STDERR_FILENO)) {
  ::dup2(m_file, STDERR_FILENO);
}

ErrorOutput::~ErrorOutput() {
  ::dup2(m_before, STDERR_FILENO);
  ::close(m_before);
  std::fputs(Text().c_str(), stderr);
  ::close(m_file);
}

std::string ErrorOutput::Text() const {
  std::string text(static_cast<std::size_t>(::lseek(m_file, 0, SEEK_END)), '\0');
  const ssize_t size = ::pread(m_file, text.data(), text.size(), 0);
  text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return text;
}

unsigned Occurrences(const std::string& text, const std::string& part) {
  unsigned count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

TAaSysComSicad AddressOf(u32 task) { return AaSysComSicadGet(task, AaSysComGetOwnNid()); }

TAaSysComSicad Serve(u32 task) {
  const u32 registered = AaSysComUserRegister(task, AaProEuCurrent());
  return registered != 0 ? AddressOf(registered) : 0;
}

void SendNumber(TAaSysComSicad receiver, u32 id, u32 number) {
  void* message = AaSysComMsgCreate(id, sizeof number, receiver);
  std::memcpy(AaSysComMsgGetPayload(message), &number, sizeof number);
  AaSysComMsgSend(&message);
}

Received ReceiveNumber(u32 timeoutUs, const u16* filter) {
  Received received;
  void* message = AaSysComMsgReceive(timeoutUs, filter);
  if (message != nullptr) {
    received.id = AaSysComMsgGetId(message);
    received.sender = AaSysComMsgGetSender(message);
    if (AaSysComMsgGetPayloadSize(message) >= sizeof received.number) {
      std::memcpy(&received.number, AaSysComMsgGetPayload(message), sizeof received.number);
    }
  }
  AaSysComMsgDestroy(&message);
  return received;
}

}  // namespace hwapi::test
