#include "WatchCommand.h"

#include "FanSource.h"
#include "Signals.h"
#include "StreamViews.h"
#include "TerminalView.h"
#include "Values.h"

#include <memory>
#include <utility>

namespace clmctl {
namespace {

Watch::Settings WatchSettings(const std::string& count, std::chrono::milliseconds timeout) {
  Watch::Settings settings{.count = {}, .timeout = timeout};
  if (!count.empty()) settings.count = ParseCount(count, "--count");
  BlockSignals();
  return settings;
}

std::unique_ptr<View> MakeView(bool json, Dashboard dashboard) {
  if (json) return std::make_unique<JsonView>();
  if (!OutputIsTerminal()) return std::make_unique<LineView>();
  return std::make_unique<TerminalView>(std::move(dashboard));
}

}  // namespace

WatchCommand::WatchCommand(const std::string& count, const Settings& settings)
    : watch(WatchSettings(count, settings.timeout)), m_settings(settings) {}

void WatchCommand::AddFans(FanSpeedRequest request) {
  const auto first = request.period.value_or(kFanDefaultPeriod);
  dashboard.fans.emplace("fans, reported to " + FormatAddress(watch.Address()) + " after " +
                         std::to_string(first.count()) + " s, then every " + std::to_string(kFanLaterPeriod.count()) +
                         " s");
  watch.Add(std::make_unique<FanSource>(std::move(request), m_settings.timeout));
}

void WatchCommand::Run() {
  // Asked before the terminal is taken: a refusal is plain text.
  watch.Start();
  const std::unique_ptr<View> view = MakeView(m_settings.json, std::move(dashboard));
  watch.Run(*view);
}

}  // namespace clmctl
