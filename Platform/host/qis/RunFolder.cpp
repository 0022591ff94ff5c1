#include "RunFolder.h"

#include "AaFile.h"
#include "AaSysLog.h"
#include "BoardDescription.h"
#include "ComLog.h"
#include "SharedFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace hwapi::qis {
namespace {

/// Read permission for everybody who may read the folder, write permission for everybody who may write there.
mode_t SharedFileMode(mode_t folder) { return (folder & 0666) | 0600; }

}  // namespace

RunFolder::RunFolder(const char* name) : m_path(board::RunDirectory()) {
  AaFileCreateDir(m_path.c_str());
  struct stat run {};
  if (::stat(m_path.c_str(), &run) == 0) {
    m_fileMode = SharedFileMode(run.st_mode);
  }
  if (*name != '\0') {
    m_path += std::string("/") + name;
    if (::mkdir(m_path.c_str(), 0700) == 0) {
      ::chmod(m_path.c_str(), run.st_mode & 07777);
    }
  }
  m_fd = ::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (m_fd < 0) {
    m_error = errno;
    if (ReportIfNot(S_IFDIR, AT_FDCWD, m_path.c_str())) {
      return;
    }
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "Cannot open the folder %s (%s): check HWAPI_RUN and its permissions", m_path.c_str(),
                   std::strerror(m_error));
  }
}

}  // namespace hwapi::qis
