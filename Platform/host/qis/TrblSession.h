/// @file
/// One collector, as the process whose files it collects sees it.
#pragma once

#include "Access.h"
#include "Fd.h"
#include "TrblRegistry.h"
#include "TrblWire.h"

#include <optional>
#include <utility>
#include <vector>

namespace hwapi::qis {

/// Answers a collector's requests. Used by the thread of TrblServer, on which the callbacks of the files run.
class TrblSession {
 public:
  /// Lets a collector in, or tells it that it may not ask.
  static std::optional<TrblSession> Open(Fd connection, const Peer& peer);

  int Connection() const { return m_connection.Get(); }
  /// Answers the request that has come.
  /// @return false when the collector is gone, does not read, or sends what is no request
  bool Answer();

 private:
  explicit TrblSession(Fd connection) : m_connection(std::move(connection)) {}
  bool List(u32 index);
  bool Hand(u32 index);
  bool Stored(u32 index);
  bool Send(const TrblOutcome& outcome, int content) const;
  std::optional<TrblFile> Find(u32 index) const;

  Fd m_connection;
  std::vector<TrblFile> m_files;  ///< as they were listed
};

}  // namespace hwapi::qis
