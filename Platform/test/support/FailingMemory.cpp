#include "FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace ps::hwapi::common::climate {
namespace {

constexpr unsigned kNever = 0;

thread_local unsigned t_allocationsLeft = kNever;  ///< the last of them fails
thread_local bool t_happened = false;
thread_local unsigned t_exempt = 0;
thread_local unsigned t_allocations = 0;

std::atomic<unsigned> g_blocksInUse = 0;

void* Allocate(std::size_t size) {
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory != nullptr) ++g_blocksInUse;
  return memory;
}

void Free(void* memory) {
  if (memory != nullptr) --g_blocksInUse;
  std::free(memory);
}

bool Fails() {
  if (t_exempt != 0) return false;
  ++t_allocations;
  if (t_allocationsLeft == kNever || --t_allocationsLeft != 0) return false;
  t_happened = true;
  return true;
}

}  // namespace

FailingAllocation::FailingAllocation(unsigned nth) {
  t_allocationsLeft = nth;
  t_happened = false;
}
FailingAllocation::~FailingAllocation() { t_allocationsLeft = kNever; }
bool FailingAllocation::Happened() const { return t_happened; }

CountedAllocations::CountedAllocations() : m_before(t_allocations) {}
unsigned CountedAllocations::Count() const { return t_allocations - m_before; }

unsigned BlocksInUse() { return g_blocksInUse; }

EnoughMemory::EnoughMemory() { ++t_exempt; }
EnoughMemory::~EnoughMemory() { --t_exempt; }

}  // namespace ps::hwapi::common::climate

namespace climate = ps::hwapi::common::climate;

// All forms, so that a sanitizer's own ones do not take part in any of them.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return climate::Fails() ? nullptr : climate::Allocate(size);
}
void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void* operator new[](std::size_t size) { return operator new(size); }

void operator delete(void* memory) noexcept { climate::Free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { climate::Free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { climate::Free(memory); }
void operator delete[](void* memory) noexcept { climate::Free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { climate::Free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { climate::Free(memory); }
