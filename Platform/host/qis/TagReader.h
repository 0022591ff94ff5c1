/// @file
/// Reading every value of a tag in order.
#pragma once

#include "TagFile.h"

#include <optional>
#include <string>

namespace hwapi::qis {

/// A place in a tag's log. It begins behind the newest value; the tag may also be set for the first time later.
class TagReader {
 public:
  explicit TagReader(std::string name);

  /// The value that was the newest when this reader began.
  const std::optional<TagRecord>& Newest() const { return m_newest; }
  /// Reports how many values a reader missed that was more than kMaxTagLog behind.
  /// @return the next value; none when all were read
  std::optional<std::string> Next();

 private:
  bool Open();
  bool FollowReplacement();
  void ReportMissed(u32 values) const;

  std::string m_name;
  Fd m_file;
  u32 m_offset = 0;
  u32 m_nextSequence = 1;  ///< of the value to be given next; those before were given
  u32 m_logSequence = 1;   ///< least one of the log's next record
  std::optional<TagRecord> m_newest;
};

}  // namespace hwapi::qis
