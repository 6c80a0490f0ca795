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
/// first ones are tried, and once they come slowly the process keeps to small ones. Bytes at the starts of pages may become 0.
void UseLargePages(void* start, Int byteCount) noexcept;

/// Fetches the pages of memory that is about to be filled, on another thread; byteCount is of whole large pages that the system was
/// asked for. It changes no bytes, and what is freed meanwhile does no harm.
using PageFetcher = void (*)(void* start, Int byteCount) noexcept;
/// From now on large memory of this copy of the framework has its pages fetched so, and none is tried. For the program alone, before
/// it has other threads.
void SetPageFetcher(PageFetcher fetch) noexcept;

/// @param byteCount  0 or more; 0 gives a valid, freeable block.
/// @return memory of undefined content aligned for any scalar, or null when there is none (also for a negative count).
[[nodiscard]] void* AllocateMemory(Int byteCount) noexcept;

/// Frees what AllocateMemory gave for the same byteCount. Null is allowed.
void FreeMemory(void* block, Int byteCount) noexcept;

}  // namespace q7z
