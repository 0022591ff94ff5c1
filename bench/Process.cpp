#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
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

constexpr int kReadyDeadlineMs = 60000;

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

void Run(const std::vector<std::string>& command, const Surroundings& surroundings) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // this program may be stopped
  for (const auto& [name, value] : surroundings.environment) setenv(name.c_str(), value.c_str(), 1);
  const int log = open(surroundings.log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  dup2(log, STDERR_FILENO);
  const rlimit limit{.rlim_cur = surroundings.descriptors, .rlim_max = surroundings.descriptors};
  if (surroundings.descriptors != 0 && setrlimit(RLIMIT_NOFILE, &limit) != 0) Die("limit of descriptors");
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
  if (sched_setaffinity(0, sizeof(cores), &cores) != 0) std::perror("cannot stay on core 0");
}

Daemon::Daemon(const std::vector<std::string>& command, const Surroundings& surroundings) {
  static int number = 0;
  const std::string name = "clm_bench-" + std::to_string(getpid()) + "-" + std::to_string(++number);
  m_notifySocket = OpenNotifySocket(name);
  Surroundings all = surroundings;
  all.environment["NOTIFY_SOCKET"] = "@" + name;

  const auto start = std::chrono::steady_clock::now();
  m_pid = fork();
  if (m_pid == 0) Run(command, all);
  WaitUntilReady(m_notifySocket, command[0]);
  m_secondsToReady = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Daemon::~Daemon() {
  kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
  close(m_notifySocket);
}

bool Daemon::IsAlive() const {
  siginfo_t ended{};
  return waitid(P_PID, static_cast<id_t>(m_pid), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == 0;
}

void Die(const std::string& what) {
  std::fprintf(stderr, "%s: %s: %s\n", program_invocation_short_name, what.c_str(), std::strerror(errno));
  std::exit(1);
}

}  // namespace bench
