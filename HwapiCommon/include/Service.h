/// @file
/// The base of every service of the hardware-API layer: start-up, message loop, shutdown. Implemented by libNUB.
#pragma once

#include "HwapiException.h"
#include "MsgDelegate.h"

#include <memory>
#include <string>

namespace ps::hwapi::common {

/// What a redundant unit is told to do.
enum ERedundancyCommand : u32 { ERedundancyCommand_Activate = 0, ERedundancyCommand_Deactivate = 1 };
/// What it answers.
enum ERedundancyState : u32 { ERedundancyState_NotReady = 0, ERedundancyState_Ready = 1 };

/// The options of a command line: "-X" or "-X value". A bare "-X" has the text "arg on", and so has one whose value is
/// that text.
class ArgumentParser {
 public:
  ArgumentParser();
  ~ArgumentParser();
  ArgumentParser(const ArgumentParser&) = delete;
  ArgumentParser& operator=(const ArgumentParser&) = delete;

  /// Makes an option known.
  /// @param text "-X Meaning\n", as the usage shows it
  void AddOption(const std::string& text);
  /// @param name the option without its dash
  /// @return "arg " and the option's value ("arg on" for a bare option); "" when it was not given
  std::string GetOption(const std::string& name) const;
  /// Parses a command line.
  /// @return "" on success, else what is wrong and what would be right
  std::string Parse(int argc, const char* const* argv);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

/// A service: one object a process. Startup runs it on the calling thread, the service thread; handlers run there too.
/// AddMsgDelegate and WaitForConfigTag may be called from every thread, all else only from the service thread.
class Service {
 public:
  /// Start-up cannot go on. Leaves Startup.
  class InitFailedException : public CHwapiException {
   public:
    InitFailedException(std::string description, std::string file, std::size_t line)
        : CHwapiException("Initialization failed", std::move(description), std::move(file), line) {}
  };

  /// @param name         name of the service
  /// @param endpoint     task number of its own messaging user
  /// @param printFeature log feature of the service
  /// @param serviceState id of the state that SetServiceStateRad reports
  Service(const std::string& name, u32 endpoint, u32 printFeature, u32 serviceState);
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  virtual ~Service();

  /// Reports a state of the service.
  virtual void SetServiceStateRad(unsigned state);
  /// Called before anything is registered. @return false ends Startup
  virtual bool PreStartup();
  /// Called once the own endpoint is registered.
  virtual void Init();
  /// Receives messages and calls the delegate of their id until SIGTERM or SIGINT comes. A MsgHandlingException or a
  /// std::bad_alloc that leaves a handler is logged; the message is freed after its handler. A message without a
  /// delegate is logged, counted and freed.
  virtual void Run();
  /// Called when Run has ended; or on another thread, while Init still waits, when a signal ends a start that does not
  /// come to its end.
  virtual void Exit();
  virtual bool HandleRedundancyStateCommand(ERedundancyCommand /*command*/, ERedundancyState* state) {
    *state = ERedundancyState_Ready;
    return true;
  }
  virtual void HandleConfigTagChange(std::string tag, unsigned value);

  /// @return the one service of this process
  static Service& Get();

  /// Parses the command line, then PreStartup, registers the endpoint, Init, Run, Exit.
  /// @throw InitFailedException when Init throws it
  void Startup(int argc, char** argv);

  /// Takes a delegate over and keeps it while it can be called. Of two for one id the newer one answers.
  void AddMsgDelegate(MsgDelegateBase* delegate);
  /// Blocks until the tag holds @p value (4 bytes).
  /// @throw MsgHandlingException when the service is stopped meanwhile
  void WaitForConfigTag(const std::string& name, u32 value);

  ArgumentParser& GetArgumentParser();
  /// Non-zero: Debug lines are logged.
  void SetVerbose(u32 verbose);
  /// @return the state of SetServiceStateRad; 0 while the service is in the state that all services share, as it is
  ///         until SetUseCommonServiceState(0)
  u32 GetServiceStateRad() const;
  /// Non-zero: the service is in the state that all services share, and leaves its own, of which nothing is kept;
  /// 0: in the one of SetServiceStateRad from here on.
  void SetUseCommonServiceState(u32 common);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace ps::hwapi::common
