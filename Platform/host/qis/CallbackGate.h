/// @file
/// Callbacks into the program end before its objects do.
#pragma once

namespace hwapi::qis {

/// Open as long as the program runs. At its normal end no callback starts any more, and running ones are waited for,
/// for a while.
class CallbackGate {
 public:
  /// Registers the gate's closing with the process's end; before the objects constructed so far are destroyed.
  static void CloseAtExit();

  /// Held while a callback runs.
  class Pass {
   public:
    Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass();
    /// Whether the callback may run.
    explicit operator bool() const { return m_granted; }

   private:
    bool m_granted;
  };
};

}  // namespace hwapi::qis
