/// @file
/// Driver error codes as text.
#pragma once

#include "ddal_error.h"

namespace ps::hwapi::common::climate {

/// The driver's text of an error code, for one log line.
class DdalText {
 public:
  explicit DdalText(int code) { ddal_strerror(code, m_text, sizeof(m_text)); }
  const char* c_str() const { return m_text; }

 private:
  char m_text[60] = {};
};

}  // namespace ps::hwapi::common::climate
