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

Bool IsRefused() noexcept
{
  const Int request = g_requests.fetch_add(1, std::memory_order_relaxed) + 1;
  const Int first = g_firstFailing.load(std::memory_order_relaxed);
  if (first == 0 || request < first || request - first >= g_failingCount.load(std::memory_order_relaxed))
    return false;
  g_failed.fetch_add(1, std::memory_order_relaxed);
  return true;
}

void* Request(std::size_t size) noexcept
{
  return IsRefused() ? nullptr : std::malloc(size ? size : 1);
}

void* RequestAligned(std::size_t size, std::align_val_t alignment) noexcept
{
  const std::size_t bytes = static_cast<std::size_t>(alignment);
  const std::size_t rounded = size == 0 ? bytes : (size + bytes - 1) / bytes * bytes;
  return rounded < size || IsRefused() ? nullptr : std::aligned_alloc(bytes, rounded);
}

void* ThrowIfNull(void* block)
{
  if (!block)
    throw std::bad_alloc();
  return block;
}

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
  return g_failed.exchange(0, std::memory_order_relaxed);
}

Int CountAllocations() noexcept
{
  return g_requests.load(std::memory_order_relaxed);
}

}  // namespace q7z::test

// The replaced functions of the language. All blocks come from malloc or aligned_alloc, so one free serves them all.

using q7z::test::Request;
using q7z::test::RequestAligned;
using q7z::test::ThrowIfNull;

void* operator new(std::size_t size)
{
  return ThrowIfNull(Request(size));
}
void* operator new[](std::size_t size)
{
  return ThrowIfNull(Request(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
  return Request(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
  return Request(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
  return ThrowIfNull(RequestAligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
  return ThrowIfNull(RequestAligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
  return RequestAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
  return RequestAligned(size, alignment);
}

void operator delete(void* block) noexcept
{
  std::free(block);
}
void operator delete[](void* block) noexcept
{
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept
{
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept
{
  std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept
{
  std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept
{
  std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept
{
  std::free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept
{
  std::free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
  std::free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
  std::free(block);
}
