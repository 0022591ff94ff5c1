/// @file
/// The simulated hardware: registers in a file that the drivers and the simulator read and write.
#pragma once

#include "SimRegisters.h"

#include <sys/types.h>

#include <mutex>
#include <string>

namespace hwapi::ddal {

/// The simulated hardware of this board. Every operation may be called from every thread. The file may be cut by
/// whoever may write it: a call that meets that fails, and sets the file up again for those that come.
class SimHardware {
 public:
  SimHardware(const SimHardware&) = delete;
  SimHardware& operator=(const SimHardware&) = delete;

  /// @return the own board's hardware, opened or created at the first call and kept for ever
  static SimHardware& Own();

  /// @return why the hardware cannot be used, and what to do; "" when it can
  const std::string& Problem() const { return m_problem; }

  /// Reads a register, or a part. @return 0, or DDAL_ERR_IO: the file cannot be used, or was cut
  template <typename Value>
  int Read(Place<Value> place, Value* value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    return ReadBytes(place.offset, value, sizeof *value);
  }
  /// Writes a register. @return as Read
  template <typename Value>
  int Write(Place<Value> place, Value value) {
    static_assert(sizeof value == sizeof(Register));
    return WriteBytes(place.offset, &value, sizeof value);
  }
  /// Finds a simulated sensor. @return 0, or as Read
  int Find(u32 device, Place<SimTemperatureRegisters>* sensor);
  /// Sets up again what was cut. @return DDAL_ERR_IO, the answer of the call that met it
  int Repair();

  /// @return whether a living process simulates; one system call
  bool Running() const;
  /// Makes this process the simulator. @return 0, or DDAL_ERR_IO (the file cannot be used, or another one simulates)
  int Start();
  /// Ends that; harmless when this process does not simulate.
  void Stop();

 private:
  SimHardware();
  std::string Open();
  bool Lock() const;
  std::string SetUp() const;
  bool ReadFile(SimRegisters& registers, off_t size) const;
  bool WriteChanges(const SimRegisters& before, const SimRegisters& registers) const;
  int ReadBytes(u32 offset, void* value, std::size_t size);
  int WriteBytes(u32 offset, const void* value, std::size_t size);
  std::string Refused(const char* what, const std::string& why) const;

  std::string m_path;
  std::string m_problem;  ///< settled by the constructor
  int m_fd = -1;
  std::mutex m_changing;   ///< held while the simulator's lock or the whole file is changed
  std::string m_said;      ///< problem that the log has
  int m_simulatorFd = -1;  ///< holds the simulator's lock
};

/// @return 0 when somebody simulates, or a driver error code
int ErrorUnlessRunning();

/// Finds the registers of a simulated fan, whether somebody simulates or not. @return 0, or a driver error code
int FindSimFan(u32 id, Place<SimFanRegisters>* fan);

}  // namespace hwapi::ddal
