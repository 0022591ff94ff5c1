/// @file
/// Who may read a copy: never more people than may read its source.
#pragma once

#include <sys/stat.h>

namespace hwapi::qis {

/// @param source of the file that is copied
/// @param wanted permissions that the copy is to have at most
/// @param group  the copy's group
/// @return permissions of the copy: @p wanted without those of classes in which somebody may not read the source. Its
///         owner, whom MayOwnCopy allows, keeps his.
mode_t ModeOfCopy(const struct stat& source, mode_t wanted, gid_t group);

/// @return whether a copy may be given to a user: whoever owns it can read it
bool MayOwnCopy(const struct stat& source, uid_t owner);

}  // namespace hwapi::qis
