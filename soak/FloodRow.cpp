/// Seven saturating senders, and what the others notice of them.
#include "Attackers.h"
#include "Honest.h"
#include "Requests.h"
#include "Rows.h"
#include "Scene.h"

#include <optional>
#include <string>

namespace soak {
namespace {

constexpr unsigned kAttackers = 7;
constexpr double kMaxP99Ratio = 2;
constexpr double kMaxLateness = 0.2;

/// What the machine does when nobody attacks.
struct Idle {
  double p99Ms;
  double handlerMs;
};

Idle MeasureIdle(const Settings& settings, Report& report) {
  HonestClient honest;
  Sleep(settings.seconds);
  report.Hard("requests lost, nobody attacks", honest.Finish(), "", 0);
  const std::optional<double> handlerMs = LongestHandlerMs();
  report.Hard("lone store and fan requests refused", handlerMs ? 0 : 1, "", 0);
  const Idle idle{.p99Ms = honest.P99Ms(), .handlerMs = handlerMs.value_or(0)};
  report.Progress("idle: p99 " + std::to_string(idle.p99Ms) + " ms, longest handler " + std::to_string(idle.handlerMs) +
                  " ms");
  return idle;
}

void AttackWith(const Flood& flood, Scene& scene, const Listener& listener, const Idle& idle, const Settings& settings,
                Report& report) {
  const std::string where = std::string(", ") + flood.name;
  const double start = Now();
  scene.StartWatching();
  Attackers attackers(flood, kAttackers, settings.seed);
  HonestClient honest;
  Sleep(settings.seconds);
  const unsigned lost = honest.Finish();
  const unsigned long sent = attackers.Sent();
  report.Hard("senders that did not end well" + where, attackers.Stop(), "", 0);
  report.Progress(std::string(flood.name) + ": " + std::to_string(sent) + " messages, honest p99 " +
                  std::to_string(honest.P99Ms()) + " ms");

  report.Hard("honest requests lost" + where, lost, "", 0);
  report.Timed("honest p99" + where, honest.P99Ms(), "ms", kMaxP99Ratio * idle.p99Ms + idle.handlerMs);
  const unsigned indications = listener.Indications().count;
  const unsigned reports = listener.FanReports().count;
  const bool goOn =
      Eventually([&] { return listener.Indications().count > indications && listener.FanReports().count > reports; });
  report.Hard("reports that never come again" + where, goOn ? 0 : 1, "", 0);
  report.Timed("indication late by" + where, listener.Indications().MaxLateness(start), "s", kMaxLateness);
  scene.ReportWatched(report, where);
}

/// @return reports that should have come by now and do not come
unsigned Missing(const Arrivals& arrivals) {
  const auto due = static_cast<unsigned>(Now() - arrivals.at[0]) + 1;
  Eventually([&] { return arrivals.count >= due; });
  const unsigned count = arrivals.count;
  return due - std::min(due, count);
}

}  // namespace

void AttackByFlood(const Settings& settings, Report& report) {
  WriteSourceFile();
  const bench::BenchBoard board(kBoard);
  const Neighbours neighbours;
  Scene scene(board, settings);
  const Listener listener;
  if (!Eventually([&] { return listener.Indications().count > 0 && listener.FanReports().count > 0; })) {
    bench::Die("no reports");
  }
  const Idle idle = MeasureIdle(settings, report);
  for (const Flood& flood : kFloods) AttackWith(flood, scene, listener, idle, settings, report);
  report.Hard("indications missing at the end", Missing(listener.Indications()), "", 0);
}

}  // namespace soak
