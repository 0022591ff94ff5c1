/// @file
/// Clients that behave, and what they see.
#pragma once

#include "Child.h"

#include <array>
#include <atomic>
#include <optional>

namespace soak {

/// What an honest client saw, in memory that is shared with it.
struct HonestRecord {
  static constexpr unsigned kRoom = 100000;
  std::atomic<bool> stop{false};
  std::atomic<unsigned> asked{0};      ///< requests, the first one too
  std::atomic<unsigned> answered{0};   ///< of these, answered before kDeadline
  std::array<float, kRoom> seconds{};  ///< how long each answer took but the first, which finds the way
};

/// @return whether a stop of a measurement that does not run is answered in time
bool StopIsAnswered();

/// A client that asks again and again until it is stopped.
class HonestClient {
 public:
  /// @param ask    makes a request; returns whether its answer came. Called in the client's process
  /// @param period seconds from one request to the next, should it be answered by then
  explicit HonestClient(bool (*ask)() = &StopIsAnswered, double period = 0.1);
  /// Lets it finish. @return how many requests were not answered; one more when it did not end well
  unsigned Finish();
  unsigned Answered() const { return m_record->answered; }
  /// @return the highest of a hundredth of the times that is not of the longest hundredth, in milliseconds
  double P99Ms() const { return LongestMs(0.01); }
  /// @return the longest time, in milliseconds
  double MaxMs() const { return LongestMs(0); }

 private:
  double LongestMs(double butShare) const;

  Shared<HonestRecord> m_record;
  Child m_process;
};

/// Arrivals of one kind of report.
struct Arrivals {
  static constexpr unsigned kRoom = 100000;
  std::atomic<unsigned> count{0};
  std::array<double, kRoom> at{};
  void Add(double now);
  /// @return how much later than once a second from the first one the latest came, after @p since
  double MaxLateness(double since) const;
};

/// A client that has a measurement and the fans' reports, one of each a second.
class Listener {
 public:
  Listener();
  const Arrivals& Indications() const { return m_record->indications; }
  const Arrivals& FanReports() const { return m_record->fanReports; }

 private:
  struct Record {
    Arrivals indications;
    Arrivals fanReports;
  };
  Shared<Record> m_record;
  Child m_process;
};

/// The services that the daemon speaks with: the reset service and the software-download service.
class Neighbours {
 public:
  Neighbours();

 private:
  Shared<std::atomic<bool>> m_ready;
  Child m_process;
};

/// Stores the black box and a file, and sets many fans, each several times.
/// @return how long the longest took, in milliseconds; nothing when one was refused or not answered
std::optional<double> LongestHandlerMs();

/// @return whether a new client gets an answer
bool NewClientIsAnswered();

}  // namespace soak
