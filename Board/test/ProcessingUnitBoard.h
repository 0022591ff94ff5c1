/// @file
/// A control board with slots for processing units, and what is measured and recorded of them.
#pragma once

#include "TestBoard.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace boardtest {

using Names = std::vector<std::string>;

/// @return names of the sensors that the service measures in a slot, 1 to 3, in the order of its indications
/// @param variant basic, m or p
Names UnitNames(unsigned slot, const std::string& variant);
/// @return one list after the other
Names operator+(Names names, const Names& more);

/// A measurement that goes on; what it shows is looked at indication by indication.
class UnitWatch {
 public:
  explicit UnitWatch(std::unique_ptr<Program> watch) : m_watch(std::move(watch)) {}

  /// Waits for an indication of exactly these sensors, newer than those that were looked at before.
  /// @return whether it came before the deadline
  bool Shows(const Names& names);
  /// Waits for the next indication. @return its sensors, as `clmctl temp watch --json` tells them
  std::vector<nlohmann::json> Next();
  /// @return what it wrote last, for people who read a failed test
  std::string Newest() const;

 private:
  std::unique_ptr<Program> m_watch;
  std::vector<nlohmann::json> m_begun;  ///< what is known of the indication after the one that was looked at
};

/// Base of the tests.
class ProcessingUnitBoardTest : public BoardTest {
 protected:
  /// Brings the board up and waits until autodetection has a client.
  void UpWithClient(unsigned clockSpeed = kClockSpeed);
  void Plug(const std::string& slot, const std::string& variant, const std::string& state = "Ready") const;
  /// Plugs into all slots at once. @return whether all of them took it
  bool PlugEverywhere(const std::string& variant, const std::string& state) const;
  void Unplug(const std::string& slot) const;
  /// Lets the autodetection service go or come back; afterwards the daemon has registered with it again.
  void GoOffline() const;
  void GoOnline() const;

  UnitWatch Watch(const std::string& type) const;
  /// @return the sensors of a measurement of its own, which no other may run of that type
  Names Measured(const std::string& type) const;
  /// Lets the service write the black box's files. @return names of sensors and fans in the trace
  std::set<std::string> Columns() const;
  /// @return columns of the board itself and these
  static std::set<std::string> BoardColumnsAnd(const Names& names);
  bool ColumnsBecome(const Names& names) const;
  std::string DaemonLog() const { return FileText(StateFolder() + "/clm.log"); }

 private:
  /// @return how many requests the autodetection service has accepted
  std::size_t Registrations() const;
};

}  // namespace boardtest
