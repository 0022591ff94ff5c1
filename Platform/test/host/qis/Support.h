/// @file
/// A board in a fresh folder, peer processes, and events between them.
#pragma once

#include "AaSysCom.h"

#include <sys/types.h>

#include <functional>
#include <string>

namespace hwapi::test {

/// A run directory and a board description of its own, removed at the end. Make it before anything of libQIS is used.
class Board {
 public:
  /// @param extra      further lines of the description
  /// @param subfolders folders between the fresh folder and the run directory
  explicit Board(const std::string& extra = "", const std::string& subfolders = "");
  Board(const Board&) = delete;
  Board& operator=(const Board&) = delete;
  ~Board();

  const std::string& Run() const { return m_run; }
  /// The fresh folder, for files of the test.
  const std::string& Folder() const { return m_folder; }

 private:
  std::string m_folder;
  std::string m_run;
};

/// Something that happens once, or several times, in one of several processes.
class Event {
 public:
  Event();
  void Happened() const;
  /// @return false when it did not happen in time
  bool Await() const;

 private:
  int m_ends[2];
};

/// A process of the board. Start them before the test itself uses libQIS.
class Peer {
 public:
  explicit Peer(const std::function<void()>& program);
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  /// Kills it if it still runs.
  ~Peer();

  void Kill();
  /// @return whether it ended by itself and successfully
  bool Ended();
  /// @return whether it was stopped by a signal, now or in a generous time
  bool IsStopped() const;

 private:
  pid_t m_pid;
};

/// Calls until the result is true, or for a generous time.
bool Eventually(const std::function<bool()>& isTrue);

/// What the process writes to standard error while this lives.
class ErrorOutput {
 public:
  ErrorOutput();
  ErrorOutput(const ErrorOutput&) = delete;
  ErrorOutput& operator=(const ErrorOutput&) = delete;
  ~ErrorOutput();
  /// Everything so far.
  std::string Text() const;

 private:
  int m_file;
  int m_before;
};

/// @return how often @p part occurs in @p text
unsigned Occurrences(const std::string& text, const std::string& part);

/// Longest wait of a receive in a test, in microseconds.
inline constexpr u32 kLongUs = 20'000'000;

/// Task number of the process under test in these tests.
inline constexpr u32 kServer = 0x4AD;

TAaSysComSicad AddressOf(u32 task);
/// Registers a task for the calling thread.
/// @return its address; 0 when refused
TAaSysComSicad Serve(u32 task);
/// Sends a message whose payload is one number.
void SendNumber(TAaSysComSicad receiver, u32 id, u32 number);
/// A received message: its id and the number in it.
struct Received {
  u32 id = 0;
  u32 number = 0;
  TAaSysComSicad sender = 0;
};
/// Receives a message of SendNumber; id 0 when none came.
Received ReceiveNumber(u32 timeoutUs = kLongUs, const u16* filter = nullptr);

}  // namespace hwapi::test
