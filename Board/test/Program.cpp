#include "Program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace boardtest {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Execute(const std::vector<std::string>& command,
                          const std::map<std::string, std::string>& environment, int out, int err) {
  // Nothing outlives the test, even when it crashes.
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  for (const auto& [name, value] : environment) {
    if (value.empty()) {
      unsetenv(name.c_str());
    } else {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  _exit(127);
}

unsigned Occurrences(const std::string& text, const std::string& part) {
  unsigned count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

/// @return false at the end of the stream
bool Append(int& fd, std::string& text) {
  char buffer[4096];
  const ssize_t length = read(fd, buffer, sizeof buffer);
  if (length > 0) {
    text.append(buffer, static_cast<std::size_t>(length));
    return true;
  }
  close(fd);
  fd = -1;
  return false;
}

}  // namespace

Program::Program(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment) {
  int out[2] = {-1, -1};
  int err[2] = {-1, -1};
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) std::abort();
  m_pid = fork();
  if (m_pid == 0) Execute(command, environment, out[1], err[1]);
  close(out[1]);
  close(err[1]);
  m_out = out[0];
  m_err = err[0];
}

Program::~Program() {
  if (m_pid > 0) {
    kill(m_pid, SIGTERM);
    Wait();
  }
  for (const int fd : {m_out, m_err}) {
    if (fd >= 0) close(fd);
  }
}

bool Program::ReadSome(Clock::time_point deadline) {
  pollfd streams[] = {{.fd = m_out, .events = POLLIN, .revents = 0}, {.fd = m_err, .events = POLLIN, .revents = 0}};
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (poll(streams, 2, static_cast<int>(std::max<std::int64_t>(left, 0))) <= 0) return false;
  if (streams[0].revents != 0) Append(m_out, m_result.out);
  if (streams[1].revents != 0) Append(m_err, m_result.err);
  return true;
}

bool Program::WaitForText(const std::string& text, unsigned times) {
  const auto deadline = Clock::now() + kDeadline;
  while (Occurrences(m_result.out, text) < times && Occurrences(m_result.err, text) < times) {
    if ((m_out < 0 && m_err < 0) || !ReadSome(deadline)) return false;
  }
  return true;
}

std::optional<std::string> Program::NextLine() {
  const auto deadline = Clock::now() + kDeadline;
  std::size_t end = 0;
  while ((end = m_result.out.find('\n', m_nextLine)) == std::string::npos) {
    if (m_out < 0 || !ReadSome(deadline)) return std::nullopt;
  }
  const std::size_t begin = std::exchange(m_nextLine, end + 1);
  return m_result.out.substr(begin, end - begin);
}

unsigned Program::Count(const std::string& text) const { return Occurrences(m_result.out, text); }

void Program::Signal(int number) const { kill(m_pid, number); }

void Program::CloseOutput() {
  if (m_out >= 0) close(m_out);
  m_out = -1;
}

Result Program::Wait() {
  const auto deadline = Clock::now() + kDeadline;
  while ((m_out >= 0 || m_err >= 0) && ReadSome(deadline)) {
  }
  if (m_out >= 0 || m_err >= 0) kill(m_pid, SIGKILL);
  Reap();
  return m_result;
}

void Program::Reap() {
  int status = 0;
  if (m_pid <= 0 || waitpid(m_pid, &status, 0) != m_pid) return;
  m_pid = -1;
  m_result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

Result Run(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment) {
  return Program(command, environment).Wait();
}

}  // namespace boardtest
