/// @file
/// The file calls of the whole process, seen and made to fail.
///
/// The program defines the C library's functions itself, and so every library in the process calls these; they pass
/// each call on. The platform and the service know nothing of it.
#pragma once

#include "Operation.h"

#include <string>
#include <vector>

namespace flash {

/// Kinds of calls that can fail.
enum class CallKind {
  Open,
  Create,
  Read,
  Write,
  Sync,
  SetMode,
  SetOwner,
  Lock,
  Rename,
  Remove,
  MakeDirectory,
  List,
  Examine,
  Close,
};

/// Sees calls.
class FileCallObserver {
 public:
  virtual ~FileCallObserver() = default;
  /// Instead of an errno value: the call writes one byte and succeeds.
  static constexpr int kOneByteOnly = -1;
  /// A call is about to be made.
  /// @return 0 when it is to be made, else the errno value with which it fails
  virtual int Before(CallKind kind) = 0;
  /// A call succeeded that changed or synced something.
  virtual void After(const Operation& operation) = 0;
};

/// While it lives, the calling thread's calls that concern "/ffs" go through an observer.
class Observation {
 public:
  explicit Observation(FileCallObserver& observer);
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;
  ~Observation();
};

/// Writes down what is done.
class Recorder : public FileCallObserver {
 public:
  int Before(CallKind) override { return 0; }
  void After(const Operation& operation) override { m_operations.push_back(operation); }
  const Operations& Done() const { return m_operations; }

 private:
  Operations m_operations;
};

/// @return paths of the files below "/ffs" that this process has open
std::vector<std::string> OpenFiles();

}  // namespace flash
