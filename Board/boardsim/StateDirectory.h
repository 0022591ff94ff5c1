/// @file
/// The folder of one simulated board: its flash, its run directory, its logs, and who runs it.
#pragma once

#include "Process.h"

#include <filesystem>
#include <optional>
#include <string>

namespace boardsim {

/// Names of what a state folder holds.
class StateDirectory {
 public:
  /// @param option the --state option; empty: the folder above HWAPI_RUN, else ${XDG_RUNTIME_DIR:-/tmp}/clm-UID
  static StateDirectory FromOption(const std::string& option);

  explicit StateDirectory(std::filesystem::path root) : m_root(std::move(root)) {}

  std::string Root() const { return m_root.string(); }
  /// What HWAPI_RUN names: sockets, tags, clock, hardware registers, the description.
  std::string Run() const { return m_root / "run"; }
  std::string Description() const { return m_root / "run" / "board.toml"; }
  /// The flash file systems that the daemon sees as /ffs and /rom.
  std::string Ffs() const { return m_root / "ffs"; }
  std::string Rom() const { return m_root / "rom"; }
  /// Link to the state folder in the run directory: below it lies what the daemon's root has of its own, so that
  /// whoever knows HWAPI_RUN finds the files of the daemon.
  std::string DaemonRoot() const { return m_root / "run" / "root"; }
  /// What the reset service answers.
  std::string ResetAnswer() const { return m_root / "reset-type"; }
  std::string SimulatorLog() const { return m_root / "boardsim.log"; }
  std::string DaemonLog() const { return m_root / "clm.log"; }

  /// Makes this process, and the children that inherit the descriptor, the ones that run the board.
  /// @throw SimError (refused) when another one does; (unreachable) when the folder cannot be used
  Fd Lock() const;
  /// Notes the process that is asked to end the board.
  void NotePid(const Fd& lock, pid_t pid) const;
  /// @return the process that runs the board; nothing when it is not up
  std::optional<pid_t> RunningPid() const;

  /// Makes an empty run directory and the flash folders. The lock must be held.
  /// @param fresh erases flash, logs and the reset type of earlier runs, too
  void Prepare(bool fresh) const;
  /// Makes this process, and its children, users of the board that is up here.
  /// @throw SimError (unreachable) when none is
  void Join() const;
  /// Sets HWAPI_RUN and HWAPI_BOARD for this process and its children.
  void SetEnvironment() const;

 private:
  std::string LockFile() const { return m_root / "boardsim.lock"; }

  std::filesystem::path m_root;
};

}  // namespace boardsim
