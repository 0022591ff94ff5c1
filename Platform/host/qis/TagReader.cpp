#include "TagReader.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "LockedFile.h"
#include "SharedFile.h"
#include "ThreadWatch.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace hwapi::qis {

TagReader::TagReader(std::string name) : m_name(std::move(name)) {
  if (!Open()) {
    return;
  }
  const TagState state = ReadTagState(m_file.Get());
  m_newest = state.newest != 0 ? ReadTagRecord(m_file.Get(), state.newest) : std::nullopt;
  if (m_newest) {
    m_offset = state.newest + m_newest->LogSize();
    m_nextSequence = m_newest->sequence + 1;
    m_logSequence = m_nextSequence;
  }
}

/// Opens the present log. It is held before its name is checked: from then on it is not lost. Also the log of a tag
/// that was never set is there to be held, else the first values could be gone before they are looked for.
bool TagReader::Open() {
  for (;;) {
    Fd file = OpenSharedFile(TagFolder().Get(), m_name.c_str(), O_RDONLY | O_CREAT, TagFolder().FileMode());
    if (!file) {
      return false;
    }
    ::fchmod(file.Get(), TagFolder().FileMode());  // the umask has no say; of another user's file it is right already
    HoldTagLog(file.Get());
    if (HasName(TagFolder().Get(), m_name.c_str(), file.Get())) {
      m_file = std::move(file);
      m_offset = TagState{}.end;
      m_logSequence = 1;
      return true;
    }
  }
}

/// @return whether there is more to read
bool TagReader::FollowReplacement() {
  if (HasName(TagFolder().Get(), m_name.c_str(), m_file.Get())) {
    return false;
  }
  // Nobody appends any more to a log that was replaced, but somebody may have done so just before.
  return m_offset < ReadTagState(m_file.Get()).end || Open();
}

void TagReader::ReportMissed(u32 values) const {
  if (values != 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kPlatformFeature,
                   "%u values of the tag %s were missed: they were read too slowly", values, m_name.c_str());
  }
}

std::optional<std::string> TagReader::Next() {
  if (!m_file && !Open()) {
    return std::nullopt;
  }
  for (;;) {
    Rest::Skip();  // each record is a step: a log may have as many as it likes
    const TagState state = ReadTagState(m_file.Get());
    if (m_offset >= state.end) {
      if (!FollowReplacement()) {
        return std::nullopt;
      }
      continue;
    }
    std::optional<TagRecord> record = ReadTagRecord(m_file.Get(), m_offset);
    if (!record || record->sequence < m_logSequence) {
      m_offset = state.end;  // not ours: whoever wrote it is no platform process
      m_logSequence = 1;
      continue;
    }
    m_offset += record->LogSize();
    m_logSequence = record->sequence + 1;
    if (record->sequence >= m_nextSequence) {
      ReportMissed(record->sequence - m_nextSequence);
      m_nextSequence = record->sequence + 1;
      return std::move(record->value);
    }
  }
}

}  // namespace hwapi::qis
