/// @file
/// Visits the troubleshooting files of all processes of the board.
#pragma once

#include "Fd.h"
#include "TrblWire.h"

#include <chrono>
#include <string>
#include <vector>

namespace hwapi::qis {

/// A process that may have troubleshooting files, as a collector sees it. Used by one thread.
class TrblProcess {
 public:
  /// @param connection to the process's socket
  TrblProcess(Fd connection, std::chrono::milliseconds timeout);

  u32 Pid() const { return m_pid; }

  struct Listed {
    std::string name;
    std::string path;
    EAaTrblFilePriority priority;
    u32 index;
  };
  /// Asks for its files.
  /// @return EAaTrblCollect_Ok, or why there is no list
  EAaTrblCollect List(std::vector<Listed>& files);

  struct Handed {
    TrblOutcome outcome;
    Fd content;
  };
  /// Asks for a file. Once an answer stayed away it is not asked any more.
  Handed Hand(u32 index);
  /// Tells that the file was copied, and waits until the process has heard it.
  void Stored(u32 index);

 private:
  template <typename Answer>
  EAaTrblCollect Ask(TrblOperation operation, u32 index, Answer& answer, Fd& content);
  EAaTrblCollect GiveUp(EAaTrblCollect reason);

  Fd m_connection;
  std::chrono::milliseconds m_timeout;
  u32 m_pid;
  EAaTrblCollect m_state = EAaTrblCollect_Ok;  ///< why it is not asked any more
};

/// As AaTrblCollect.
i32 CollectTrblFiles(std::chrono::milliseconds timeout, TAaTrblVisitor visitor, void* context);

}  // namespace hwapi::qis
