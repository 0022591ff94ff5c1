/// @file
/// How the indications of a measurement are shown.
#pragma once

#include "TempRequest.h"

#include <memory>
#include <string>
#include <string_view>

namespace clmctl {

/// Shows indications as they come.
class TempView {
 public:
  TempView() = default;
  TempView(const TempView&) = delete;
  TempView& operator=(const TempView&) = delete;
  virtual ~TempView() = default;

  /// @return false when nobody reads the output any more
  virtual bool Show(const Indication& indication) = 0;
  /// Tells something about the measurement that is no indication.
  virtual void Note(std::string_view text);
  /// The terminal has another size.
  virtual void Redraw() {}
};

/// One line a sensor, in columns that do not move.
class TempLineView : public TempView {
 public:
  bool Show(const Indication& indication) override;
};

/// One JSON object a sensor.
class TempJsonView : public TempView {
 public:
  bool Show(const Indication& indication) override;

 private:
  u32 m_count = 0;
};

/// @return the sensor's name, or its number when it has none
std::string SensorText(u32 name);
/// @return "ok", or "failed: " and the driver's words
std::string StateText(const Reading& reading);

}  // namespace clmctl
