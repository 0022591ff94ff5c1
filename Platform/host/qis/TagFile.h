/// @file
/// Public tags as files, one a tag, in the folder "tags" of the run directory.
///
/// A tag's file is a log: a state, then records of {u32 size, u32 sequence, value}. The state is a number of 8 bytes,
/// in its low half the end of the log, in its high half the offset of the newest record, and then its complement, by
/// which a reader notices that it read in the middle of a write. A set appends a record behind the end and then moves
/// the state with one write; what a killed writer left behind the end does not count. Writers hold the file's lock;
/// readers need none.
///
/// A log that grew long is replaced by a fresh one, and the old one moves to the folder "tags.old" for readers that are
/// not at its end yet. A reader holds a shared record lock on the file it reads. As long as somebody does so for the
/// file in "tags.old", the present one is not replaced but grows, up to kMaxTagLog: no reader that goes on misses a
/// value. It also grows when it cannot be replaced.
///
/// Whoever may set tags may write anything into these files. A state that no log can have is that of an empty log.
#pragma once

#include "AaConfig.h"
#include "Fd.h"
#include "RunFolder.h"

#include <cstdint>
#include <optional>
#include <string>

namespace hwapi::qis {

/// A log that reaches this size is replaced at the next set.
inline constexpr u32 kLongTagLog = 64 * 1024;
/// No log is longer: a reader that stands still must not fill the run directory. One that would be is replaced although
/// somebody still reads the one before; a reader that is so far behind misses values, and reports how many.
inline constexpr u32 kMaxTagLog = 1024 * 1024;

/// The folder of the tags.
const RunFolder& TagFolder();

/// Where a log ends and where its newest record is.
struct TagState {
  u32 end = 2 * sizeof(std::uint64_t);
  u32 newest = 0;
};

/// One value of a tag.
struct TagRecord {
  u32 sequence = 0;  ///< 1 for the first set, then one more for each
  std::string value;

  /// Bytes it takes in the log.
  u32 LogSize() const { return static_cast<u32>(2 * sizeof(u32) + value.size()); }
};

/// @return the state, within the file and kMaxTagLog; that of an empty log when there is none such
TagState ReadTagState(int file);
/// @return the record there; none when that is no record
std::optional<TagRecord> ReadTagRecord(int file, u32 offset);

/// Sets a tag.
/// @param mayNot asked while nobody else can set the tag: whether it is left as it is
/// @return 0, also when it was left as it is, else an errno value (ETIMEDOUT: somebody keeps it locked; EFBIG: the log
/// is as long as it may be and cannot be replaced)
int AppendToTag(const std::string& name, const std::string& value, bool (*mayNot)(const std::string& name));
/// @return newest record of a tag; none when it was never set
std::optional<TagRecord> NewestOfTag(const std::string& name);

/// Takes part in reading a log: it is kept until the descriptor is closed.
void HoldTagLog(int file);

}  // namespace hwapi::qis
