#include "MessagePool.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <mutex>

namespace hwapi::qis {
namespace {

/// What stands before each block.
struct alignas(16) BlockHead {
  void* link;                ///< of its owner; of a free block: the next one
  std::uint32_t sizeNumber;  ///< index in kSizes; kOtherSize for a block that is not kept
};

/// Sizes of blocks that are kept: the first holds every fixed message of the board with its header and slack, the
/// second the longest temperature and fan indications.
constexpr std::array<std::size_t, 2> kSizes{256, 1280};
constexpr std::uint32_t kOtherSize = kSizes.size();
/// Free blocks that are kept per size: more messages are seldom under way at a time.
constexpr unsigned kMaxFreeBlocks = 64;

struct FreeBlocks {
  BlockHead* first = nullptr;
  unsigned count = 0;
};

struct Pool {
  std::mutex mutex;
  std::array<FreeBlocks, kSizes.size()> sizes;
};

/// Needs no destructor: threads free messages after the end of main.
constinit Pool g_pool;

std::uint32_t SizeNumberOf(std::size_t size) {
  std::uint32_t number = 0;
  while (number < kSizes.size() && size > kSizes[number]) {
    ++number;
  }
  return number;
}

BlockHead* TakeFree(std::uint32_t sizeNumber) {
  const std::lock_guard lock(g_pool.mutex);
  FreeBlocks& free = g_pool.sizes[sizeNumber];
  BlockHead* const taken = free.first;
  if (taken != nullptr) {
    free.first = static_cast<BlockHead*>(taken->link);
    --free.count;
  }
  return taken;
}

/// @return whether it is kept for later
bool KeepFree(BlockHead* block) {
  const std::lock_guard lock(g_pool.mutex);
  FreeBlocks& free = g_pool.sizes[block->sizeNumber];
  if (free.count >= kMaxFreeBlocks) {
    return false;
  }
  block->link = free.first;
  free.first = block;
  ++free.count;
  return true;
}

}  // namespace

void* AllocateBlock(std::size_t size) {
  const std::uint32_t sizeNumber = SizeNumberOf(size);
  BlockHead* block = sizeNumber != kOtherSize ? TakeFree(sizeNumber) : nullptr;
  if (block == nullptr) {
    const std::size_t room = sizeNumber != kOtherSize ? kSizes[sizeNumber] : size;
    block = static_cast<BlockHead*>(std::malloc(sizeof(BlockHead) + room));
    if (block == nullptr) {
      return nullptr;
    }
    block->sizeNumber = sizeNumber;
  }
  return block + 1;
}

void FreeBlock(void* block) {
  if (block == nullptr) {
    return;
  }
  BlockHead* const head = static_cast<BlockHead*>(block) - 1;
  if (head->sizeNumber == kOtherSize || !KeepFree(head)) {
    std::free(head);
  }
}

void*& LinkOf(void* block) { return (static_cast<BlockHead*>(block) - 1)->link; }

}  // namespace hwapi::qis
