/// @file
/// Something that a service indicates again and again once it was asked to.
#pragma once

#include "Client.h"
#include "View.h"

#include <chrono>
#include <string>

namespace clmctl {

/// Indications of one kind: how to ask for them, how to end that, and where they are shown. Used by one thread.
class Source {
 public:
  /// What became of a message.
  enum class Shown {
    Indication,
    Nothing,     ///< it was no indication
    NobodyReads  ///< the output has gone
  };

  Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  virtual ~Source() = default;

  /// @return task of the service
  virtual u32 Endpoint() const = 0;
  /// @return message id of the indications
  virtual u32 IndicationId() const = 0;
  /// @return longest time to the next indication, board time
  virtual std::chrono::milliseconds Interval() const = 0;
  /// @return what may be the reason that an indication did not come
  virtual std::string SilenceText() const = 0;

  /// Asks for the indications.
  /// @throw CommandError when the service refuses or does not answer
  virtual void Begin(const Client& client) = 0;
  /// Asks for them once more, of a service that was started again.
  /// @throw CommandError when the service does not answer
  virtual void Resume(const Client& client) = 0;
  /// Ends what Begin began, as far as the service can.
  /// @throw CommandError when the service does not answer
  virtual void End(const Client& client) = 0;
  virtual Shown Show(void* indication, View& view) = 0;
};

}  // namespace clmctl
