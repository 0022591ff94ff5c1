#include "PictureFile.h"

#include "CommandError.h"
#include "FileDescriptor.h"
#include "Screen.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace clmctl {
namespace {

/// @return the mode of a new file of this user
mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

void WritePicture(const std::string& path, const std::string& content) {
  struct stat status {};
  // Nothing but a file is replaced: renaming over a device would remove it.
  if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw CommandError(ExitCode::Usage, "cannot write " + Printable(path) + ": it is no regular file");
  }
  std::string temporary = path + ".XXXXXX";
  const UniqueFd file(mkstemp(temporary.data()));
  if (file.Get() >= 0 && WriteAll(file.Get(), content) && fchmod(file.Get(), NewFileMode()) == 0 &&
      std::rename(temporary.c_str(), path.c_str()) == 0) {
    return;
  }
  const int error = errno;
  if (file.Get() >= 0) unlink(temporary.c_str());
  throw CommandError(ExitCode::Usage, "cannot write " + Printable(path) + ": " + std::strerror(error));
}

}  // namespace clmctl
