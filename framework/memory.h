#pragma once

// Allocation that reports failure instead of throwing. All growing containers of the framework take their memory here, so
// that both sides of the host boundary can hand arrays and texts to each other, and so that a test that replaces the global
// operator new sees (and may refuse) every request.

#include "framework/types.h"

namespace q7z
{

/// Blocks of at least this many bytes are aligned for large pages and the system is asked to use them.
inline constexpr Int kLargeBlockBytes = Int(4) << 20;

/// Has fresh memory come in large pages, which takes a small part of the time, where the system gives them quickly. Where a virtual
/// machine has handed its free memory back, each large page is fetched again bit by bit, while small pages are mostly at hand: so the
/// first ones are fetched here, and once they come slowly the process keeps to small ones.
/// @param fetched  how many bytes from the start are fetched at once. The starts of their pages become 0.
void UseLargePages(void* start, Int byteCount, Int fetched = Int(16) << 20) noexcept;

/// @param byteCount  0 or more; 0 gives a valid, freeable block.
/// @return memory of undefined content aligned for any scalar, or null when there is none (also for a negative count).
[[nodiscard]] void* AllocateMemory(Int byteCount) noexcept;

/// Frees what AllocateMemory gave for the same byteCount. Null is allowed.
void FreeMemory(void* block, Int byteCount) noexcept;

}  // namespace q7z
