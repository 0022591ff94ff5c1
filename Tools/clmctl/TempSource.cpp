#include "TempSource.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "TempTypes.h"
#include "messages/MessageIds.h"

#include <optional>

namespace clmctl {

u32 TempSource::Endpoint() const { return HWAPI_TEMPERATURE_SERVICE; }

u32 TempSource::IndicationId() const { return API_TEMP_MEAS_IND_MSG; }

std::string TempSource::SilenceText() const { return "is the daemon running?"; }

SApiTempMeasReq TempSource::RequestOf(ETempMeasCommand command) const {
  return {.command = command,
          .sensorType = m_settings.type,
          .interval = static_cast<u32>(m_settings.interval.count()),
          .resolution = ETempMeasResolution_Normal,
          .clientAddr = 0};
}

u32 TempSource::Start(const Client& client) const {
  SendTempMeas(client, RequestOf(ETempMeasCommand_Start));
  try {
    return AwaitTempMeas(client, m_settings.timeout).error;
  } catch (const CommandError& unanswered) {
    // It is not stopped from here: the measurement that runs may be another client's.
    throw CommandError(unanswered.Code(), std::string(unanswered.what()) +
                                              "; if it began all the same, `clmctl temp stop " +
                                              SensorTypeText(m_settings.type) + "` ends it");
  }
}

void TempSource::Begin(const Client& client) {
  const u32 error = Start(client);
  if (error == ETempMeasError_NoError) return;
  const std::string type = SensorTypeText(m_settings.type);
  throw CommandError(ExitCode::Refused, "cannot measure " + type + ": " + TempErrorMeaning(error, type));
}

void TempSource::Resume(const Client& client) {
  // A measurement that still runs is answered with "already started", which is as good.
  RequestTempMeas(client, RequestOf(ETempMeasCommand_Start), m_settings.timeout);
}

void TempSource::End(const Client& client) {
  RequestTempMeas(client, RequestOf(ETempMeasCommand_Stop), m_settings.timeout);
}

Source::Shown TempSource::Show(void* indication, View& view) {
  const std::optional<TempIndication> parsed = ParseTempIndication(indication);
  if (!parsed) return Shown::Nothing;
  return view.Show(*parsed) ? Shown::Indication : Shown::NobodyReads;
}

}  // namespace clmctl
