/// @file
/// Calls that are to fail. A failing call is recorded, does nothing and leaves its outputs untouched.
///
/// What a failing call returns: functions with a pointer, null; members of Service, the exception that their
/// declaration names; all others @p result, which is, when it is not given, 0 for a TBoolean, a count, an id or an
/// enumerator, EIO for an errno result, EAaTrblRet_Failed for the troubleshooting registry, and DDAL_ERR_IO for a
/// driver. AaFileWrite takes @p result items and makes the close of that file fail, as the contract says.
///
/// A function that cannot fail, or that the platform does not have, is refused with std::invalid_argument.
#pragma once

#include <optional>
#include <string>

namespace fake {

/// Lets the @p n th call from now fail (1: the next one).
void FailCall(const std::string& function, unsigned n = 1, std::optional<int> result = std::nullopt);
/// Lets every call from the @p n th one on fail.
void FailFrom(const std::string& function, unsigned n, std::optional<int> result = std::nullopt);
/// Lets every call fail.
void FailEvery(const std::string& function, std::optional<int> result = std::nullopt);
/// Takes back every failure that is still to come.
void StopFailing();

}  // namespace fake
