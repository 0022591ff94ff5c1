#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {
namespace {

constexpr int kReadyDeadlineMs = 10000;

/// The socket on which a daemon reports. Its name is abstract: nothing is left behind.
int OpenNotifySocket(const std::string& name) {
  const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path + 1, name.data(), name.size());
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0) Die("notify socket");
  return fd;
}

void Run(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  const int null = open("/dev/null", O_WRONLY);
  dup2(null, STDERR_FILENO);
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

void WaitUntilReady(int fd, const std::string& program) {
  for (;;) {
    pollfd waiting{.fd = fd, .events = POLLIN, .revents = 0};
    if (poll(&waiting, 1, kReadyDeadlineMs) != 1) Die(program + " did not get ready");
    char text[128] = {};
    if (recv(fd, text, sizeof(text) - 1, 0) > 0 && std::strstr(text, "READY=1") != nullptr) return;
  }
}

}  // namespace

void StayOnOneCore() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(0, &cores);
  if (sched_setaffinity(0, sizeof(cores), &cores) != 0) std::perror("clm_bench: cannot stay on core 0");
}

Daemon::Daemon(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment) {
  static int number = 0;
  const std::string name = "clm_bench-" + std::to_string(getpid()) + "-" + std::to_string(++number);
  const int fd = OpenNotifySocket(name);
  std::map<std::string, std::string> all = environment;
  all["NOTIFY_SOCKET"] = "@" + name;

  const auto start = std::chrono::steady_clock::now();
  m_pid = fork();
  if (m_pid == 0) Run(command, all);
  WaitUntilReady(fd, command[0]);
  m_secondsToReady = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  close(fd);
}

Daemon::~Daemon() {
  kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
}

void Die(const std::string& what) {
  std::fprintf(stderr, "clm_bench: %s: %s\n", what.c_str(), std::strerror(errno));
  std::exit(1);
}

}  // namespace bench
