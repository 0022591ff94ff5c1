/// @file
/// Memory that runs out when a test says so, and is counted. Replaces operator new of the whole program.
#pragma once

namespace ps::hwapi::common::climate {

/// Lets one allocation of the calling thread fail, as long as this object lives.
class FailingAllocation {
 public:
  /// @param nth which one, from 1
  explicit FailingAllocation(unsigned nth);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// @return whether it has failed
  bool Happened() const;
};

/// Counts the allocations of the calling thread, as long as this object lives.
class CountedAllocations {
 public:
  CountedAllocations();
  CountedAllocations(const CountedAllocations&) = delete;
  CountedAllocations& operator=(const CountedAllocations&) = delete;

  /// @return how many there were so far
  unsigned Count() const;

 private:
  unsigned m_before;
};

/// @return how many blocks all threads have allocated and not yet freed
unsigned BlocksInUse();

/// Exempts the calling thread, as long as this object lives: its allocations neither fail nor count.
class EnoughMemory {
 public:
  EnoughMemory();
  EnoughMemory(const EnoughMemory&) = delete;
  EnoughMemory& operator=(const EnoughMemory&) = delete;
  ~EnoughMemory();
};

}  // namespace ps::hwapi::common::climate
