/// @file
/// Memory of messages: blocks of a few sizes that are used again, so that a busy process does not ask the allocator for
/// each message.
#pragma once

#include <cstddef>

namespace hwapi::qis {

/// @return memory for @p size bytes, aligned for every record, with undefined content; null when memory is short.
/// May be called from every thread.
void* AllocateBlock(std::size_t size);
/// Gives memory of AllocateBlock back. Null is ignored.
void FreeBlock(void* block);
/// @return a block's link to another one, free for its owner; undefined at first
void*& LinkOf(void* block);

}  // namespace hwapi::qis
