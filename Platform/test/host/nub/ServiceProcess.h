/// @file
/// A service in a process of its own, as tests see it: its words, its log and its end.
#pragma once

#include "Service.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

/// Task of the service under test.
inline constexpr u32 kProbeTask = 0x4B6;

/// A service whose steps are told one word a line on standard output: "pre-startup", "init", "run", "exit".
class Probe : public ps::hwapi::common::Service {
 public:
  /// What a test adds to the steps.
  struct Steps {
    std::vector<std::string> arguments{};                  ///< of the command line, without the program's name
    std::function<bool(Probe&)> preStartup{};              ///< its result is PreStartup's
    std::function<void(Probe&)> init{};                    ///< called by Init
    std::function<void(const std::exception&)> escaped{};  ///< gets what leaves Startup
  };

  explicit Probe(const Steps& steps);
  bool PreStartup() override;
  void Init() override;
  void Run() override;
  void Exit() override;

  /// Lets a function handle messages of an id.
  void Handle(u32 msgId, std::function<void(void* msg)> handler);
  /// Lets messages of an id be answered by the next id with @p value as payload.
  void Answer(u32 msgId, u32 value);

 private:
  const Steps& m_steps;
};

/// Writes a line to the test.
void Say(const std::string& line);
/// Waits for the test to call ServiceProcess::GoOn.
void WaitForTest();

/// Runs a Probe. Make all of them before the test's process itself uses the platform.
class ServiceProcess {
 public:
  explicit ServiceProcess(const Probe::Steps& steps);
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;
  /// Ends the process if it still runs.
  ~ServiceProcess();

  /// @return the next line of its standard output; "" when there is none any more
  std::string Line();
  /// Reads lines up to this one. @return whether it came
  bool Says(const std::string& line);
  void GoOn() const;
  void Signal(int number) const;
  pid_t Pid() const { return m_pid; }
  /// Waits for the end of the process. @return its status as waitpid gives it
  int End();
  /// Waits until it has written something to standard error. @return whether it did before the test's patience was over
  bool Logs(const std::string& text) const;
  /// Waits for the end of the process. @return what it wrote to standard error
  std::string Errors();

 private:
  [[noreturn]] void Become(const Probe::Steps& steps, int outputFd, int inputFd) const;

  std::string m_errorFile;
  pid_t m_pid = -1;
  int m_output = -1;
  int m_input = -1;
  int m_status = -1;
  std::string m_read;
};
