/// @file
/// The requests about the black box, and the announcement of a reset. Each waits for its answer; what else comes stays
/// queued. All throw CommandError (unreachable) when there is none in time, and (usage) for values that the message has
/// no room for.
#pragma once

#include "Client.h"
#include "messages/BlackBox.h"
#include "messages/Reset.h"

#include <chrono>
#include <optional>
#include <string>

namespace clmctl {

/// Most older copies of a stored file that the service keeps, whatever it is asked.
inline constexpr u32 kMostOlderCopies = 2;

/// @param name of the copy; nothing: that of the source
/// @throw CommandError (usage) for a source that is not absolute or too long, a name that is empty, too long or not a
///        plain one, and for more older copies than the service keeps
SApiBlackboxStoreFileReq StoreFileRequest(const std::string& source, const std::optional<std::string>& name,
                                          u32 olderCopies);
/// @throw CommandError (usage) for extended information that is too long
SApi2ResetReq ResetRequest(u32 type, u32 category, const std::string& info);
/// @return text of a field, whether or not it has its terminating zero
std::string ExtendedInfoOf(const SResetReason& reason);

/// Asks the service to write its files, and waits until it has: its answer goes elsewhere, so a request that it answers
/// here is sent behind, which it handles after. Boards without a black box do not answer that one.
void RequestStore(const Client& client, std::chrono::milliseconds timeout);
SApiBlackboxStoreFileResp RequestStoreFile(const Client& client, const SApiBlackboxStoreFileReq& request,
                                           std::chrono::milliseconds timeout);
/// Asks for the reason of the last reset of the client's own board.
SApiGetBlackboxResetInfoResp RequestResetInfo(const Client& client, std::chrono::milliseconds timeout);
SApiResetResp RequestReset(const Client& client, const SApi2ResetReq& request, std::chrono::milliseconds timeout);

}  // namespace clmctl
