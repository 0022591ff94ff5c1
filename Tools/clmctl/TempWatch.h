/// @file
/// A measurement that is started, shown and stopped again.
#pragma once

#include "Client.h"
#include "TempView.h"

#include <optional>

namespace clmctl {

/// Runs one measurement for its whole life; goes on by itself when the daemon was started again meanwhile.
class TempWatch {
 public:
  struct Settings {
    ETempSensorType type;
    std::chrono::milliseconds interval;
    std::optional<u32> count;           ///< indications to show; none: until a signal comes
    std::chrono::milliseconds timeout;  ///< longest wait for an answer
  };

  explicit TempWatch(const Settings& settings) : m_settings(settings) {}

  /// Starts the measurement.
  /// @throw CommandError when the service refuses or does not answer
  void Start();
  /// Shows indications until the count is reached, a signal comes or nobody reads; then stops the measurement.
  /// @throw CommandError (unreachable) when the count cannot be reached because no more indications come
  void Run(TempView& view);

 private:
  struct Route {
    u32 id;
    void (TempWatch::*handler)(void* msg, TempView& view);
  };
  static const Route kRoutes[];

  void ReceiveUntilEnded(TempView& view);
  SApiTempMeasResp Request(ETempMeasCommand command) const;
  void HandleIndication(void* msg, TempView& view);
  void HandleSignal(void* msg, TempView& view);
  void HandleOnlineTag(void* msg, TempView& view);
  void HandleOverdue(TempView& view);

  Settings m_settings;
  Client m_client;
  u32 m_shown = 0;
  u32 m_onlineTagsSeen = 0;
  bool m_overdue = false;
  bool m_ended = false;
};

}  // namespace clmctl
