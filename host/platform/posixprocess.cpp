// The program and its surroundings by POSIX.

#include <malloc.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "framework/memory.h"
#include "host/platform/process.h"

namespace q7z
{

PlatformProcess::PlatformProcess(int argc, char** argv) : _pointers(argv, argv + argc)
{
  _pointers.push_back(nullptr);
}

PlatformProcess::~PlatformProcess() = default;

std::string GetProgramFolder()
{
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

const Bool kIsAlwaysUtf8 = false;

bool IsTerminal(std::FILE* stream) noexcept
{
  return isatty(fileno(stream));
}

bool TakesEscapes(std::FILE* stream) noexcept
{
  const char* const terminal = std::getenv("TERM");
  return terminal && std::string_view(terminal) != "dumb" && IsTerminal(stream);
}

void CatchInterrupts(void (*function)(int signal))
{
  struct sigaction action = {};
  action.sa_handler = function;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void ExpectAllocations([[maybe_unused]] Int likely, [[maybe_unused]] Int most) noexcept
{
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  constexpr int kUsualPad = 128 << 10;
  constexpr int kMapped = 512 << 10;          // what is larger comes and goes by itself
  constexpr size_t kProbe = size_t(1) << 20;  // more than what a young heap has left
  // Only the address space is taken, but where that is limited it is needed for other things.
  rlimit limit = {};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY)
    return;
  const Int page = sysconf(_SC_PAGESIZE);
  const Int quarterOfMemory = page * (sysconf(_SC_PHYS_PAGES) / 4);
  const Int room = std::min({most, quarterOfMemory, Int(INT_MAX)});
  // A heap that gave memory back would have to take it again; what is large is not part of it.
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  mallopt(M_TOP_PAD, static_cast<int>(room));
  mallopt(M_MMAP_THRESHOLD, 2 * static_cast<int>(kProbe));
  const auto before = reinterpret_cast<uintptr_t>(sbrk(0));
  void* volatile const probe = std::malloc(kProbe);
  const auto after = reinterpret_cast<uintptr_t>(sbrk(0));
  std::free(probe);
  mallopt(M_TOP_PAD, kUsualPad);
  mallopt(M_MMAP_THRESHOLD, kMapped);
  const uintptr_t start = (before + page - 1) / page * page;
  const Int fetched = after > start ? std::min(likely, static_cast<Int>(after - start)) : 0;
  UseLargePages(reinterpret_cast<void*>(start), fetched);
#endif
}

/// Signals in between are not lost, since they are let in by the wait alone.
struct InterruptibleInput::State
{
  sigset_t before;
};

InterruptibleInput::InterruptibleInput() : _state(std::make_unique<State>())
{
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigaddset(&blocked, SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, &_state->before);
}

InterruptibleInput::~InterruptibleInput()
{
  sigprocmask(SIG_SETMASK, &_state->before, nullptr);
}

Int InterruptibleInput::Read(void* target, Int byteCount, bool (*isInterrupted)())
{
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  while (!isInterrupted())
  {
    if (ppoll(&input, 1, nullptr, &_state->before) < 0 && errno == EINTR)
      continue;
    return read(STDIN_FILENO, target, static_cast<size_t>(byteCount));
  }
  return 0;
}

}  // namespace q7z
