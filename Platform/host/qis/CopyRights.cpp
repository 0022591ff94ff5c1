#include "CopyRights.h"

namespace hwapi::qis {
namespace {

/// Members of the source's group have the rights of the group only, also where others have more.
bool MayEverybodyRead(const struct stat& source) {
  return (source.st_mode & S_IRGRP) != 0 && (source.st_mode & S_IROTH) != 0;
}

}  // namespace

mode_t ModeOfCopy(const struct stat& source, mode_t wanted, gid_t group) {
  const bool everybody = MayEverybodyRead(source);
  const bool isSameGroup = group == source.st_gid;
  const bool mayGroup = isSameGroup ? (source.st_mode & S_IRGRP) != 0 : everybody;
  const bool mayOthers = isSameGroup ? (source.st_mode & S_IROTH) != 0 : everybody;
  return (wanted & S_IRWXU) | (mayGroup ? wanted & S_IRWXG : 0) | (mayOthers ? wanted & S_IRWXO : 0);
}

bool MayOwnCopy(const struct stat& source, uid_t owner) {
  return owner == 0 || owner == source.st_uid || MayEverybodyRead(source);
}

}  // namespace hwapi::qis
