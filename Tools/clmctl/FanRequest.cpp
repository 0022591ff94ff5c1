#include "FanRequest.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "FanNames.h"
#include "PayloadView.h"
#include "messages/MessageIds.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>

namespace clmctl {
namespace {

using ps::hwapi::common::PayloadView;

/// Where the variable parts of a response lie; the rest is the same in all of them.
struct AnswerLayout {
  std::size_t timePeriod;  ///< 0: the response has none
  std::size_t numOfItems;
  std::size_t items;
};

constexpr AnswerLayout kFirstVersion = {.timePeriod = 0,
                                        .numOfItems = offsetof(SApiSetFanSpeedResp, numOfItems),
                                        .items = offsetof(SApiSetFanSpeedResp, unit)};
constexpr AnswerLayout kSecondVersion = {.timePeriod = offsetof(SApi2SetFanSpeedResp, timePeriod),
                                         .numOfItems = offsetof(SApi2SetFanSpeedResp, numOfItems),
                                         .items = offsetof(SApi2SetFanSpeedResp, unit)};
static_assert(kFirstVersion.numOfItems == offsetof(SApiSetFanPwmFreqResp, numOfItems));
static_assert(kFirstVersion.items == offsetof(SApiSetFanPwmFreqResp, unit));
static_assert(sizeof(SFanSpeedResp) == sizeof(SFanPwmFreqResp));

/// Sends a request made of @p head and one item a fan, and waits for the answer.
/// @param itemsAt offset of the first item, less than the size of @p head, which has one
template <typename Head>
FanAnswer Exchange(const Client& client, u32 requestId, const Head& head, std::size_t itemsAt,
                   const std::vector<FanSetting>& fans, u16 responseId, std::chrono::milliseconds timeout) {
  const auto size = static_cast<u32>(itemsAt + fans.size() * sizeof(SFanSpeedParam));
  std::vector<u8> empty(size);
  Message msg = client.Create(requestId, empty.data(), size, Client::AddressOf(HWAPI_FAN_SERVICE));
  PayloadView payload(msg.get());
  payload.Put(0, head);
  for (std::size_t i = 0; i < fans.size(); ++i) {
    payload.Put(itemsAt + i * sizeof(SFanSpeedParam), SFanSpeedParam{.fanId = fans[i].fan, .speed = fans[i].value});
  }
  client.Send(std::move(msg));

  const u16 filter[] = {1, responseId};
  const Message response = client.ReceiveUntil(Client::Clock::now() + timeout, filter);
  if (response != nullptr) return ParseFanAnswer(response.get());
  throw CommandError(
      ExitCode::Unreachable,
      "the fan service did not answer within " + std::to_string(timeout.count()) +
          "ms; on a unit without fans it answers nothing (the daemon's log tells at its start), nor does "
          "it when the board's [access] list refuses this user");
}

/// Tells the requests of several clients apart in the service's log.
u32 TransactionId() { return static_cast<u32>(getpid()); }

}  // namespace

FanAnswer RequestFanFrequencies(const Client& client, const std::vector<FanSetting>& fans,
                                std::chrono::milliseconds timeout) {
  const SApiSetFanPwmFreqReq head{
      .transactionId = TransactionId(), .numOfItems = static_cast<u32>(fans.size()), .unit = {}};
  return Exchange(client, API_SET_FAN_PWM_FREQ_REQ_MSG, head, offsetof(SApiSetFanPwmFreqReq, unit), fans,
                  API_SET_FAN_PWM_FREQ_RESP_MSG, timeout);
}

FanAnswer RequestFanSpeeds(const Client& client, const FanSpeedRequest& request, std::chrono::milliseconds timeout) {
  const auto numOfItems = static_cast<u32>(request.fans.size());
  if (request.period) {
    const SApi2SetFanSpeedReq head{.transactionId = TransactionId(),
                                   .receiver = request.receiver,
                                   .timePeriod = static_cast<u32>(request.period->count()),
                                   .numOfItems = numOfItems,
                                   .unit = {}};
    return Exchange(client, API2_SET_FAN_SPEED_REQ_MSG, head, offsetof(SApi2SetFanSpeedReq, unit), request.fans,
                    API2_SET_FAN_SPEED_RESP_MSG, timeout);
  }
  const SApiSetFanSpeedReq head{
      .transactionId = TransactionId(), .receiver = request.receiver, .numOfItems = numOfItems, .unit = {}};
  FanAnswer answer = Exchange(client, API_SET_FAN_SPEED_REQ_MSG, head, offsetof(SApiSetFanSpeedReq, unit), request.fans,
                              API_SET_FAN_SPEED_RESP_MSG, timeout);
  answer.periodSeconds = static_cast<u32>(kFanDefaultPeriod.count());
  return answer;
}

FanAnswer ParseFanAnswer(void* msg) {
  const AnswerLayout& layout = AaSysComMsgGetId(msg) == API2_SET_FAN_SPEED_RESP_MSG ? kSecondVersion : kFirstVersion;
  const PayloadView payload(msg);
  const auto response = payload.Get<SHwapiOpResp>(offsetof(SApiSetFanSpeedResp, response));
  FanAnswer answer;
  answer.status = response.status;
  answer.info.assign(std::begin(response.info), std::find(std::begin(response.info), std::end(response.info), 0));
  if (layout.timePeriod != 0) answer.periodSeconds = payload.Get<u32>(layout.timePeriod);
  const u32 count = payload.Get<u32>(layout.numOfItems);
  for (u32 i = 0; i < count; ++i) {
    const std::size_t at = layout.items + i * sizeof(SFanSpeedResp);
    if (at + sizeof(SFanSpeedResp) > payload.Size()) break;
    const auto fan = payload.Get<SFanSpeedResp>(at);
    answer.fans.push_back({.fan = fan.param.fanId, .value = fan.param.speed, .status = fan.status});
  }
  return answer;
}

std::string RefusalText(const FanAnswer& answer) {
  std::string text;
  for (const FanOutcome& fan : answer.fans) {
    if (fan.status != EStatus_NoError) text += (text.empty() ? "" : ", ") + FanText(fan.fan);
  }
  const bool someFan = !text.empty();
  text = someFan ? "the fan service refuses to set " + text : "the fan service refuses the request";
  text += ": " + std::string(StatusName(answer.status)) + " (" + std::to_string(answer.status) + ")";
  text += someFan ? "; the unit has no such fan, or its driver fails" : ", \"" + answer.info + "\"";
  return text + "; see the daemon's log";
}

std::optional<FanIndication> ParseFanIndication(void* msg) {
  constexpr std::size_t kItems = offsetof(SApiFanSpeedInd, unit);
  const PayloadView payload(msg);
  if (payload.Size() < kItems) return std::nullopt;
  const std::size_t held = (payload.Size() - kItems) / sizeof(SHwapiFanUnitInfo);
  const std::size_t count = std::min<std::size_t>(payload.Get<u32>(offsetof(SApiFanSpeedInd, numOfItems)), held);
  FanIndication indication;
  for (std::size_t i = 0; i < count; ++i) {
    const auto info = payload.Get<SHwapiFanUnitInfo>(kItems + i * sizeof(SHwapiFanUnitInfo));
    indication.readings.push_back({.fan = info.fanId, .rpm = info.speed, .frequency = info.pwmFreq});
  }
  return indication;
}

}  // namespace clmctl
