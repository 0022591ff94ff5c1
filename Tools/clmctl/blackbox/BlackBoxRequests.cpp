#include "BlackBoxRequests.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "Msg.h"
#include "Screen.h"
#include "messages/MessageIds.h"

#include <unistd.h>

#include <cstring>

namespace clmctl {
namespace {

/// Tells the answer to this program's request from a late one to an earlier one.
u32 Transaction() { return static_cast<u32>(getpid()); }

/// @throw CommandError (usage) when the field has no room for the text and its terminating zero
template <std::size_t N>
void SetField(char (&field)[N], const std::string& text, const std::string& what) {
  if (text.size() >= N) {
    throw CommandError(ExitCode::Usage, what + " may have at most " + std::to_string(N - 1) + " bytes, not " +
                                            std::to_string(text.size()) + ": " + Printable(text));
  }
  std::memcpy(field, text.data(), text.size());
}

template <typename Record>
void SendTo(const Client& client, u32 id, const Record& record) {
  client.Send(client.Create(id, &record, sizeof record, Client::AddressOf(HWAPI_BLACKBOX)));
}

[[noreturn]] void NoAnswer(std::chrono::milliseconds timeout, const std::string& why) {
  throw CommandError(ExitCode::Unreachable,
                     "the service did not answer within " + std::to_string(timeout.count()) + "ms (--timeout): " + why);
}

/// @return the next answer with that id that @p isOurs accepts
template <typename Record, u32 Id, typename Accept>
Record Answer(const Client& client, std::chrono::milliseconds timeout, const std::string& why, Accept isOurs) {
  constexpr u16 kFilter[] = {1, Id};
  const auto deadline = Client::Clock::now() + timeout;
  while (true) {
    const Message answer = client.ReceiveUntil(deadline, kFilter);
    if (answer == nullptr) NoAnswer(timeout, why);
    const Record record = ps::hwapi::common::Msg<Record, Id>(answer.get()).Record();
    if (isOurs(record)) return record;
  }
}

constexpr auto kByTransaction = [](const auto& record) { return record.transactionId == Transaction(); };

SApiGetBlackboxResetInfoReq ResetInfoRequest(const Client& client) {
  return {.transactionId = Transaction(),
          .target_board = AaSysComNmapGetBoard(client.Address()),
          .target_cpu = AaSysComNmapGetCpu(client.Address())};
}

SApiGetBlackboxResetInfoResp ResetInfo(const Client& client, std::chrono::milliseconds timeout,
                                       const std::string& why) {
  SendTo(client, API_GET_BLACKBOX_RESET_INFO_REQ_MSG, ResetInfoRequest(client));
  return Answer<SApiGetBlackboxResetInfoResp, API_GET_BLACKBOX_RESET_INFO_RESP_MSG>(client, timeout, why,
                                                                                    kByTransaction);
}

constexpr const char* kWithoutBlackBox =
    "a unit without a black box does not serve this request, or the board's [access] list refuses this user; see the "
    "daemon's log";

}  // namespace

SApiBlackboxStoreFileReq StoreFileRequest(const std::string& source, const std::optional<std::string>& name,
                                          u32 olderCopies) {
  if (!source.starts_with('/')) {
    throw CommandError(ExitCode::Usage, "SRC is a path in the daemon's own file system and begins with '/', unlike " +
                                            Printable(source));
  }
  if (name && (name->empty() || name->find('/') != std::string::npos)) {
    throw CommandError(ExitCode::Usage,
                       "--as takes the plain name of the copy, one character or more without '/', "
                       "unlike '" +
                           Printable(*name) + "'");
  }
  if (olderCopies > kMostOlderCopies) {
    throw CommandError(ExitCode::Usage, "--keep is 0, 1 or 2: the service keeps at most two older copies");
  }
  SApiBlackboxStoreFileReq request{};
  request.transactionId = Transaction();
  request.numOfPreviousFiles = olderCopies;
  SetField(request.sourceFile, source, "SRC");
  SetField(request.targetFile, name.value_or(""), "--as");
  return request;
}

SApi2ResetReq ResetRequest(u32 type, u32 category, const std::string& info) {
  SApi2ResetReq request{};
  request.reset_state = EHwapiResetServiceResetState_ON;
  request.reset_extra = type;
  request.reset_reason.category = static_cast<EResetCategory>(category);
  SetField(request.reset_reason.extended_info, info, "--info");
  return request;
}

std::string ExtendedInfoOf(const SResetReason& reason) {
  return std::string(reason.extended_info, strnlen(reason.extended_info, sizeof reason.extended_info));
}

void RequestStore(const Client& client, std::chrono::milliseconds timeout) {
  SendTo(client, API_STORE_BLACKBOX_DATA_REQ_MSG, SApiStoreBlackboxDataReq{.transactionId = Transaction()});
  ResetInfo(client, timeout,
            std::string("the request to store was sent, but nobody told that it is done; ") + kWithoutBlackBox);
}

SApiBlackboxStoreFileResp RequestStoreFile(const Client& client, const SApiBlackboxStoreFileReq& request,
                                           std::chrono::milliseconds timeout) {
  SendTo(client, API_BLACKBOX_STORE_FILE_REQ_MSG, request);
  return Answer<SApiBlackboxStoreFileResp, API_BLACKBOX_STORE_FILE_RESP_MSG>(
      client, timeout, "is it stuck, or does the board's [access] list refuse this user? See the daemon's log",
      kByTransaction);
}

SApiGetBlackboxResetInfoResp RequestResetInfo(const Client& client, std::chrono::milliseconds timeout) {
  return ResetInfo(client, timeout, kWithoutBlackBox);
}

SApiResetResp RequestReset(const Client& client, const SApi2ResetReq& request, std::chrono::milliseconds timeout) {
  SendTo(client, API2_RESET_REQ_MSG, request);
  return Answer<SApiResetResp, API_RESET_RESP_MSG>(
      client, timeout, kWithoutBlackBox, [&request](const SApiResetResp& answer) {
        return answer.target_board == request.target_board && answer.target_cpu == request.target_cpu &&
               answer.reset_extra == request.reset_extra;
      });
}

}  // namespace clmctl
