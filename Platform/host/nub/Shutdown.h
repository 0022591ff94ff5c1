/// @file
/// The orderly end of the service: who asks for it, and who has to know.
#pragma once

#include "AaSysCom.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

namespace hwapi::nub {

/// Message that makes the receive loop look whether the service ends.
inline constexpr u32 kWakeUpMsg = 0xFF01;

/// The request to end. Never destroyed, as the signal thread outlives every service. Every operation may be called from
/// every thread.
class Shutdown {
 public:
  static Shutdown& Own();

  /// Time that a start has to end by itself once a signal came, before it is given up.
  static constexpr std::chrono::milliseconds kPatienceWithStart{1000};

  /// Blocks SIGTERM, SIGINT, and SIGALRM, by which a Limit ends, for the calling thread and for all that it starts.
  /// Call before any thread runs.
  static void BlockSignals();
  /// Starts the thread that takes the signals: the first one is a request to end, the next one ends the process at
  /// once.
  static void TakeSignals();

  /// Lets a request wake the receive loop of this endpoint from now on; 0: of none.
  void SetEndpoint(TAaSysComSicad endpoint) { m_endpoint = endpoint; }
  bool HasEndpoint() const { return m_endpoint != 0; }
  /// Asks for the end: wakes the receive loop and everybody who waits for a tag.
  void Request();
  bool Requested() const { return m_requested; }

  /// A start that may block. When a signal comes and the start does not end in time, it is given up: the way out is
  /// called on the thread of the signals, and the signal ends the process.
  class Start {
   public:
    /// @param wayOut says good-bye to the board; runs while the start is still under way
    explicit Start(void (*wayOut)());
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    /// The start has ended. Never returns when it was given up.
    ~Start();
  };

  /// A step that may take only so long: then the thread of the signals ends the process. One at a time.
  class Limit {
   public:
    /// @param status of the process
    /// @param text   on standard error
    Limit(unsigned seconds, int status, std::string text);
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
    /// The step is over.
    ~Limit();
  };

 private:
  void EndAtLimit();
  static void* WaitForSignals(void* unused);
  void GiveUpStart(int signal);

  // Sequentially consistent: either the request finds the endpoint, or the loop finds the request before it waits.
  std::atomic<TAaSysComSicad> m_endpoint{0};
  std::atomic<bool> m_requested{false};

  std::mutex m_startMutex;
  std::condition_variable m_startEnded;
  void (*m_wayOut)() = nullptr;  ///< null unless a start is under way
  int m_limitStatus = 0;
  std::string m_limitText;  ///< empty unless a Limit is under way
};

}  // namespace hwapi::nub
