/// @file
/// A temperature measurement as a source of indications.
#pragma once

#include "Source.h"

namespace clmctl {

/// Starts a measurement, and stops it in the end.
class TempSource : public Source {
 public:
  struct Settings {
    ETempSensorType type;
    std::chrono::milliseconds interval;
    std::chrono::milliseconds timeout;  ///< longest wait for an answer
  };

  explicit TempSource(const Settings& settings) : m_settings(settings) {}

  u32 Endpoint() const override;
  u32 IndicationId() const override;
  std::chrono::milliseconds Interval() const override { return m_settings.interval; }
  std::string SilenceText() const override;
  void Begin(const Client& client) override;
  void Resume(const Client& client) override;
  void End(const Client& client) override;
  Shown Show(void* indication, View& view) override;

 private:
  SApiTempMeasReq RequestOf(ETempMeasCommand command) const;
  /// @return the service's answer to a start, an ETempMeasError
  u32 Start(const Client& client) const;

  const Settings m_settings;
};

}  // namespace clmctl
