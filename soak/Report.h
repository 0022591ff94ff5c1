/// @file
/// The figures of the rows, and whether they keep their limits.
#pragma once

#include <string>
#include <vector>

namespace soak {

/// @return the middle one of figures of several turns, at least one
double Median(std::vector<double> values);

/// Collects figures. Every limit is a highest value. Of several figures of the same name in a row the highest counts.
class Report {
 public:
  /// @param judgeTimes whether the figures of Timed have to keep their limits
  explicit Report(bool judgeTimes) : m_judgeTimes(judgeTimes) {}

  /// The row that further figures belong to.
  void BeginRow(const std::string& name);
  /// Says on standard output how far the row is.
  void Progress(const std::string& text) const;
  void EndRow() const;

  /// A figure that does not depend on the machine.
  void Hard(const std::string& what, double value, const char* unit, double limit);
  /// A figure that a busy machine spoils.
  void Timed(const std::string& what, double value, const char* unit, double limit);

  /// Prints all figures. @return whether every one that is judged keeps its limit
  bool Print() const;

 private:
  struct Figure {
    std::string row;
    std::string what;
    double value;
    const char* unit;
    double limit;
    bool judged;
    bool IsKept() const { return value <= limit; }
  };

  void Add(const std::string& what, double value, const char* unit, double limit, bool judged);
  static void PrintFigure(const Figure& figure);

  bool m_judgeTimes;
  std::string m_row;
  double m_rowStart = 0;
  std::vector<Figure> m_figures;
};

}  // namespace soak
