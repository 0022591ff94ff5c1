/// @file
/// The fan service's speed reports as a source of indications.
#pragma once

#include "FanRequest.h"
#include "Source.h"

namespace clmctl {

/// Has the speeds of the fans reported to the own client. The service knows one recipient only: this takes the reports
/// over from whoever got them before, and nothing ends them.
class FanSource : public Source {
 public:
  /// @param request fans to set, maybe none; a receiver in it is not used
  FanSource(FanSpeedRequest request, std::chrono::milliseconds timeout);

  u32 Endpoint() const override;
  u32 IndicationId() const override;
  std::chrono::milliseconds Interval() const override;
  std::string SilenceText() const override;
  void Begin(const Client& client) override;
  void Resume(const Client& client) override;
  void End(const Client& /*client*/) override {}
  Shown Show(void* indication, View& view) override;

 private:
  const bool m_setsFans;
  FanSpeedRequest m_request;
  const std::chrono::milliseconds m_timeout;
  bool m_first = true;  ///< the next indication is the first one
};

}  // namespace clmctl
