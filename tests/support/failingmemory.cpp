#include "tests/support/failingmemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace q7z::test
{
namespace
{

std::atomic<Int> g_requests{0};
std::atomic<Int> g_firstFailing{0};  // number of the first request that fails; 0 when none does
std::atomic<Int> g_failingCount{0};
std::atomic<Int> g_failed{0};
std::atomic<Int> g_largest{0};

Bool IsRefused(std::size_t size) noexcept
{
  Int largest = g_largest.load(std::memory_order_relaxed);
  while (static_cast<Int>(size) > largest && !g_largest.compare_exchange_weak(largest, static_cast<Int>(size)))
  {}
  const Int request = g_requests.fetch_add(1, std::memory_order_relaxed) + 1;
  const Int first = g_firstFailing.load(std::memory_order_relaxed);
  if (first == 0 || request < first || request - first >= g_failingCount.load(std::memory_order_relaxed))
    return false;
  g_failed.fetch_add(1, std::memory_order_relaxed);
  return true;
}

#if !defined(Q7Z_WRAP_NEW)
void* Request(std::size_t size) noexcept
{
  return IsRefused(size) ? nullptr : std::malloc(size ? size : 1);
}

#ifdef _WIN32
void* AllocateAligned(std::size_t alignment, std::size_t size) noexcept
{
  return _aligned_malloc(size, alignment);
}
void FreeAligned(void* block) noexcept
{
  _aligned_free(block);
}
#else
void* AllocateAligned(std::size_t alignment, std::size_t size) noexcept
{
  return std::aligned_alloc(alignment, size);
}
void FreeAligned(void* block) noexcept
{
  std::free(block);
}
#endif

void* RequestAligned(std::size_t size, std::align_val_t alignment) noexcept
{
  const std::size_t bytes = static_cast<std::size_t>(alignment);
  const std::size_t rounded = size == 0 ? bytes : (size + bytes - 1) / bytes * bytes;
  return rounded < size || IsRefused(size) ? nullptr : AllocateAligned(bytes, rounded);
}

void* ThrowIfNull(void* block)
{
  if (!block)
    throw std::bad_alloc();
  return block;
}
#endif

}  // namespace

void FailAllocation(Int n, Int count) noexcept
{
  StopFailingAllocations();
  g_failingCount.store(count, std::memory_order_relaxed);
  g_firstFailing.store(n, std::memory_order_relaxed);
}

Int StopFailingAllocations() noexcept
{
  g_firstFailing.store(0, std::memory_order_relaxed);
  g_requests.store(0, std::memory_order_relaxed);
  g_largest.store(0, std::memory_order_relaxed);
  return g_failed.exchange(0, std::memory_order_relaxed);
}

Int CountAllocations() noexcept
{
  return g_requests.load(std::memory_order_relaxed);
}

Int GetLargestAllocation() noexcept
{
  return g_largest.load(std::memory_order_relaxed);
}

}  // namespace q7z::test

#if defined(Q7Z_WRAP_NEW)

// The thread sanitizer has functions of its own that nothing may replace, so here the linker leads every call of this program to
// the __wrap_ functions. The names are those of the language's functions as the linker knows them.

extern "C"
{
using q7z::test::IsRefused;
using Nothrow = const std::nothrow_t&;
using Block = void*;

#define WRAP_NEW(NAME, REFUSED, QUALIFIER, ARGUMENTS, ...)      \
  Block __real_##NAME(__VA_ARGS__) QUALIFIER;                   \
  Block __wrap_##NAME(__VA_ARGS__) QUALIFIER                    \
  {                                                             \
    return IsRefused(size) ? REFUSED : __real_##NAME ARGUMENTS; \
  }

WRAP_NEW(_Znwm, throw std::bad_alloc(), , (size), std::size_t size)
WRAP_NEW(_Znam, throw std::bad_alloc(), , (size), std::size_t size)
WRAP_NEW(_ZnwmRKSt9nothrow_t, nullptr, noexcept, (size, tag), std::size_t size, Nothrow tag)
WRAP_NEW(_ZnamRKSt9nothrow_t, nullptr, noexcept, (size, tag), std::size_t size, Nothrow tag)
WRAP_NEW(_ZnwmSt11align_val_t, throw std::bad_alloc(), , (size, alignment), std::size_t size, std::align_val_t alignment)
WRAP_NEW(_ZnamSt11align_val_t, throw std::bad_alloc(), , (size, alignment), std::size_t size, std::align_val_t alignment)
WRAP_NEW(_ZnwmSt11align_val_tRKSt9nothrow_t, nullptr, noexcept, (size, alignment, tag), std::size_t size,
         std::align_val_t alignment, Nothrow tag)
WRAP_NEW(_ZnamSt11align_val_tRKSt9nothrow_t, nullptr, noexcept, (size, alignment, tag), std::size_t size,
         std::align_val_t alignment, Nothrow tag)
}

#else

// The replaced functions of the language, plain and for arrays.

using q7z::test::FreeAligned;
using q7z::test::Request;
using q7z::test::RequestAligned;
using q7z::test::ThrowIfNull;

using Block = void*;

#define REPLACE_NEW(RESULT, QUALIFIER, ...)   \
  Block operator new(__VA_ARGS__) QUALIFIER   \
  {                                           \
    return RESULT;                            \
  }                                           \
  Block operator new[](__VA_ARGS__) QUALIFIER \
  {                                           \
    return RESULT;                            \
  }

#define REPLACE_DELETE(FREE, ...)              \
  void operator delete(__VA_ARGS__) noexcept   \
  {                                            \
    FREE(block);                               \
  }                                            \
  void operator delete[](__VA_ARGS__) noexcept \
  {                                            \
    FREE(block);                               \
  }

REPLACE_NEW(ThrowIfNull(Request(size)), , std::size_t size)
REPLACE_NEW(Request(size), noexcept, std::size_t size, const std::nothrow_t&)
REPLACE_NEW(ThrowIfNull(RequestAligned(size, alignment)), , std::size_t size, std::align_val_t alignment)
REPLACE_NEW(RequestAligned(size, alignment), noexcept, std::size_t size, std::align_val_t alignment, const std::nothrow_t&)

REPLACE_DELETE(std::free, void* block)
REPLACE_DELETE(std::free, void* block, std::size_t)
REPLACE_DELETE(std::free, void* block, const std::nothrow_t&)
REPLACE_DELETE(FreeAligned, void* block, std::align_val_t)
REPLACE_DELETE(FreeAligned, void* block, std::size_t, std::align_val_t)
REPLACE_DELETE(FreeAligned, void* block, std::align_val_t, const std::nothrow_t&)

#endif
