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

u32 TempSource::Request(const Client& client, ETempMeasCommand command) const {
  const SApiTempMeasReq request{.command = command,
                                .sensorType = m_settings.type,
                                .interval = static_cast<u32>(m_settings.interval.count()),
                                .resolution = ETempMeasResolution_Normal,
                                .clientAddr = 0};
  return RequestTempMeas(client, request, m_settings.timeout).error;
}

void TempSource::Begin(const Client& client) {
  const u32 error = Request(client, ETempMeasCommand_Start);
  if (error == ETempMeasError_NoError) return;
  const std::string type = SensorTypeText(m_settings.type);
  throw CommandError(ExitCode::Refused, "cannot measure " + type + ": " + TempErrorMeaning(error, type));
}

void TempSource::Resume(const Client& client) {
  // A measurement that still runs is answered with "already started", which is as good.
  Request(client, ETempMeasCommand_Start);
}

void TempSource::End(const Client& client) { Request(client, ETempMeasCommand_Stop); }

Source::Shown TempSource::Show(void* indication, View& view) {
  const std::optional<TempIndication> parsed = ParseTempIndication(indication);
  if (!parsed) return Shown::Nothing;
  return view.Show(*parsed) ? Shown::Indication : Shown::NobodyReads;
}

}  // namespace clmctl
