#include "TempWatch.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "Signals.h"
#include "TagObserver.h"
#include "TempTypes.h"
#include "messages/MessageIds.h"
#include "messages/Status.h"

#include <cstring>

namespace clmctl {

const TempWatch::Route TempWatch::kRoutes[] = {
    {.id = API_TEMP_MEAS_IND_MSG, .handler = &TempWatch::HandleIndication},
    {.id = CLMCTL_SIGNAL_IND_MSG, .handler = &TempWatch::HandleSignal},
    {.id = CLMCTL_TAG_IND_MSG, .handler = &TempWatch::HandleOnlineTag},
};

SApiTempMeasResp TempWatch::Request(ETempMeasCommand command) const {
  const SApiTempMeasReq request{.command = command,
                                .sensorType = m_settings.type,
                                .interval = static_cast<u32>(m_settings.interval.count()),
                                .resolution = ETempMeasResolution_Normal,
                                .clientAddr = 0};
  return RequestTempMeas(m_client, request, m_settings.timeout);
}

void TempWatch::Start() {
  // Observed first: a daemon that is started again between the answer and the observation would be missed otherwise.
  ObserveTag("app.hwapi.online.4b6", m_client.Address());
  const SApiTempMeasResp response = Request(ETempMeasCommand_Start);
  if (response.error == ETempMeasError_NoError) return;
  const std::string type = SensorTypeText(m_settings.type);
  throw CommandError(ExitCode::Refused, "cannot measure " + type + ": " + TempErrorMeaning(response.error, type));
}

void TempWatch::Run(TempView& view) {
  ForwardSignals(m_client.Address());
  try {
    ReceiveUntilEnded(view);
  } catch (const CommandError&) {
    // What was started is not left running; that the service may not answer is told already.
    try {
      Request(ETempMeasCommand_Stop);
    } catch (const CommandError&) {
    }
    throw;
  }
  Request(ETempMeasCommand_Stop);
}

void TempWatch::ReceiveUntilEnded(TempView& view) {
  while (!m_ended) {
    const auto patience = m_settings.interval + m_settings.timeout;
    const bool wait = m_overdue && !m_settings.count;
    const Message msg =
        m_client.ReceiveUntil(wait ? Client::Clock::time_point::max() : Client::Clock::now() + patience);
    if (msg == nullptr) {
      HandleOverdue(view);
      continue;
    }
    for (const Route& route : kRoutes) {
      if (route.id == AaSysComMsgGetId(msg.get())) (this->*route.handler)(msg.get(), view);
    }
  }
}

void TempWatch::HandleIndication(void* msg, TempView& view) {
  const std::optional<Indication> indication = ParseIndication(msg);
  if (!indication) return;
  m_overdue = false;
  ++m_shown;
  m_ended = !view.Show(*indication) || m_shown == m_settings.count;
}

void TempWatch::HandleSignal(void* msg, TempView& view) {
  m_ended = IsStopSignal(msg);
  if (!m_ended) view.Redraw();
}

void TempWatch::HandleOnlineTag(void* msg, TempView& view) {
  // The first one tells the value from before the start.
  if (m_onlineTagsSeen++ == 0) return;
  u32 status = 0;
  if (AaSysComMsgGetPayloadSize(msg) < sizeof status) return;
  std::memcpy(&status, AaSysComMsgGetPayload(msg), sizeof status);
  if (status != EStatus_Initialized) {
    view.Note("the temperature service has gone offline; waiting for it");
    return;
  }
  try {
    // A measurement that still runs is answered with "already started", which is as good.
    Request(ETempMeasCommand_Start);
    view.Note("the temperature service was started again; the measurement goes on");
  } catch (const CommandError& error) {
    view.Note(error.what());
  }
}

void TempWatch::HandleOverdue(TempView& view) {
  const std::string text = "no indication for " + std::to_string((m_settings.interval + m_settings.timeout).count()) +
                           "ms; is the daemon running?";
  if (m_settings.count) throw CommandError(ExitCode::Unreachable, text);
  m_overdue = true;
  view.Note(text);
}

}  // namespace clmctl
