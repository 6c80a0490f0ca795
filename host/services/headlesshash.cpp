#include "host/services/headlesshash.h"

#include <fcntl.h>
#include <unistd.h>
#include <xxhash.h>

#include <cerrno>
#include <memory>

#include "framework/check.h"
#include "host/services/filereading.h"

namespace q7z
{

namespace
{

constexpr size_t kBlockBytes = size_t(1) << 18;

Result<String> FormatHash(XXH128_hash_t hash) noexcept
{
  static constexpr char kDigits[] = "0123456789abcdef";
  char text[32];
  for (int i = 0; i < 16; ++i)
  {
    text[i] = kDigits[hash.high64 >> (60 - 4 * i) & 15];
    text[16 + i] = kDigits[hash.low64 >> (60 - 4 * i) & 15];
  }
  return String::Create({text, sizeof(text)});
}

struct StateDeleter
{
  void operator()(XXH3_state_t* state) const noexcept { XXH3_freeState(state); }
};

/// Feeds a whole file. @return whether it could be read.
bool FeedFile(const std::string& path, XXH3_state_t& state)
{
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0)
    return false;
  const std::unique_ptr<char[]> block(new char[kBlockBytes]);
  ssize_t count = 0;
  do
  {
    count = read(fd, block.get(), kBlockBytes);
    if (count > 0)
      XXH3_128bits_update(&state, block.get(), static_cast<size_t>(count));
  } while (count > 0 || (count < 0 && errno == EINTR));
  close(fd);
  return count == 0;
}

}  // namespace

Result<String> HeadlessHash::HashText(const String& text) noexcept
{
  return FormatHash(XXH3_128bits(text.GetBytes(), static_cast<size_t>(text.GetByteCount())));
}

Result<String> HeadlessHash::HashFile(const Url& url) noexcept
{
  try
  {
    const std::unique_ptr<XXH3_state_t, StateDeleter> state(XXH3_createState());
    if (!state)
      return Error::OutOfMemory();
    XXH3_128bits_reset(state.get());
    const std::string path = ToStd(url.GetPath());
    if (GetFileSystemType(path) != HostFileSystemType::kFile || !FeedFile(path, *state))
      return MAKE_ERROR(ErrorClass::kIo, "The file cannot be hashed."_s);
    return FormatHash(XXH3_128bits_digest(state.get()));
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
