/// @file
/// Indications that are asked for, shown, and ended again.
#pragma once

#include "Client.h"
#include "Source.h"

#include <memory>
#include <optional>
#include <vector>

namespace clmctl {

/// Watches one or more sources for its whole life; goes on by itself when the daemon was started again meanwhile.
class Watch {
 public:
  struct Settings {
    std::optional<u32> count;           ///< indications of the first source to show; none: until a signal comes
    std::chrono::milliseconds timeout;  ///< how late an indication may be
  };

  explicit Watch(const Settings& settings) : m_settings(settings) {}

  /// Adds a source. One daemon serves all of them; it announces the one that is added last after the others.
  void Add(std::unique_ptr<Source> source);
  /// Asks for all indications.
  /// @throw CommandError when a service refuses or does not answer; nothing is left begun then
  void Start();
  /// Shows indications until the count is reached, a signal comes or nobody reads; then ends them.
  /// @throw CommandError (unreachable) when the count cannot be reached because no more indications come
  void Run(View& view);

  /// @return where the indications are sent to
  TAaSysComSicad Address() const { return m_client.Address(); }

 private:
  using Deadline = Client::Clock::time_point;
  struct Watched {
    std::unique_ptr<Source> source;
    Deadline due = Deadline::max();  ///< of the next indication; max: it is overdue, which is told already
  };

  void Begin();
  void End();
  void EndQuietly();
  void ReceiveUntilEnded(View& view);
  Deadline NextWakeUp(const View& view) const;
  void ExpectNext(Watched& watched) const;
  void TellOverdue(View& view);
  void HandleMessage(void* msg, View& view);
  void HandleIndication(Watched& watched, void* msg, View& view);
  void HandleOnlineTag(void* msg, View& view);
  void HandleOverdue(Watched& watched, View& view);

  const Settings m_settings;
  Client m_client;
  std::vector<Watched> m_sources;
  std::size_t m_begun = 0;  ///< sources that were begun
  u32 m_shown = 0;
  u32 m_onlineTagsSeen = 0;
  bool m_ended = false;
};

}  // namespace clmctl
