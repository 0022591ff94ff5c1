#include "Report.h"

#include "Child.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace soak {

double Median(std::vector<double> values) {
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

void Report::BeginRow(const std::string& name) {
  m_row = name;
  m_rowStart = Now();
  std::printf("== %s\n", name.c_str());
  std::fflush(stdout);
}

void Report::Progress(const std::string& text) const {
  std::printf("   %s: %s\n", m_row.c_str(), text.c_str());
  std::fflush(stdout);
}

void Report::EndRow() const {
  std::printf("== %s: %.1f s\n", m_row.c_str(), Now() - m_rowStart);
  std::fflush(stdout);
}

void Report::Hard(const std::string& what, double value, const char* unit, double limit) {
  Add(what, value, unit, limit, true);
}

void Report::Timed(const std::string& what, double value, const char* unit, double limit) {
  Add(what, value, unit, limit, m_judgeTimes);
}

void Report::Add(const std::string& what, double value, const char* unit, double limit, bool judged) {
  const auto same =
      std::ranges::find_if(m_figures, [&](const Figure& figure) { return figure.row == m_row && figure.what == what; });
  if (same != m_figures.end()) {
    same->value = std::max(same->value, value);
    return;
  }
  m_figures.push_back({.row = m_row, .what = what, .value = value, .unit = unit, .limit = limit, .judged = judged});
}

void Report::PrintFigure(const Figure& figure) {
  const char* verdict = "not judged";
  if (figure.judged) verdict = figure.IsKept() ? "kept" : "EXCEEDED";
  std::printf("%-8s %-58s %10.2f %-5s at most %9.2f  %s\n", figure.row.c_str(), figure.what.c_str(), figure.value,
              figure.unit, figure.limit, verdict);
}

bool Report::Print() const {
  std::printf("\n");
  for (const Figure& figure : m_figures) PrintFigure(figure);
  return std::ranges::all_of(m_figures, [](const Figure& figure) { return !figure.judged || figure.IsKept(); });
}

}  // namespace soak
