/// @file
/// A board on which nothing happens by chance: its clock stands still, and what it measures stays as it was set.
#pragma once

#include "ProcessingUnitBoard.h"
#include "SeededRequests.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace boardtest {

/// Time passes only where a test lets it, and no further than to what the test then waits for.
class StandingClockBoard : public ProcessingUnitBoardTest {
 protected:
  void UpStandingStill();
  /// Lets time pass.
  void Pass(unsigned seconds);

  /// Sends a request. @return what came back, as clmctl prints it
  std::string Send(const Request& request) const;
  /// Sends a request for indications, and waits for some of them; before each, time passes.
  /// @param first   seconds to the first indication
  /// @param further seconds from one to the next
  std::string SendForIndications(const Request& request, unsigned count, unsigned first, unsigned further);

  /// To be called once the daemon of a start has been asked for a measurement or a fan speed: from then on it traces.
  /// Returns when it waits for its first minute.
  void BeginTrace();
  /// Lets time pass until the trace has one more row.
  /// The last readings must be those of the values that are set now, so that a reading in the same moment changes none.
  void PassToNextRow();
  /// Resets the board, and waits until the daemon has come back and the history has changed.
  void ResetAndAwaitHistory(const std::vector<std::string>& options);

 private:
  void AwaitTracingThreads() const;
  std::size_t Rows() const;
  std::string Lifedata(const std::string& file) const {
    return FileText(StateFolder() + "/ffs/fs1/config/lifedata/" + file);
  }

  unsigned m_now = 0;      ///< seconds since the board came up
  unsigned m_nextRow = 0;  ///< when the trace's next minute is over
  pid_t m_daemon = 0;
};

}  // namespace boardtest
