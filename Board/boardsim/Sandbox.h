/// @file
/// The daemon's own root: the host's, read-only, with the board's flash at /ffs and /rom. Made with bubblewrap, which
/// needs no privileges.
#pragma once

#include "StateDirectory.h"

#include <string>
#include <vector>

namespace boardsim {

/// @param command  what runs inside
/// @param statusFd descriptor that is told the inner process id (bubblewrap's --info-fd); -1 for none
/// @return the command line that runs @p command in the board's root
std::vector<std::string> SandboxCommand(const StateDirectory& state, const std::vector<std::string>& command,
                                        int statusFd);

/// Runs `true` in the root.
/// @throw SimError (unreachable) when that fails, with what to install or allow
void CheckSandbox(const StateDirectory& state);

/// @return the process id out of what bubblewrap wrote to its --info-fd; 0 when there is none
pid_t InnerPid(const std::string& info);

/// @return the daemon's program file
/// @param option the --daemon option; empty: looked for beside this program
/// @throw SimError (unreachable) when there is none
std::string FindDaemon(const std::string& option);

}  // namespace boardsim
