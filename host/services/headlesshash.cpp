#include "host/services/headlesshash.h"

#include <xxhash.h>

#include <memory>

#include "host/services/filereading.h"

namespace q7z
{

namespace
{

// Small enough to stay in the processor's cache between reading and hashing.
constexpr Int kBlockBytes = Int(1) << 18;

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

Result<String> HashWholeFile(const std::string& path)
{
  const auto fail = [&] { return MakeIoError("Cannot read \"" + path + "\": " + GetSystemReason()); };
  const std::unique_ptr<XXH3_state_t, StateDeleter> state(XXH3_createState());
  PlatformFile file;
  if (!state)
    return Error::OutOfMemory();
  if (!file.Open(path.c_str(), PlatformOpen::kRead))
    return fail();
  XXH3_128bits_reset(state.get());
  const auto block = std::make_unique_for_overwrite<char[]>(kBlockBytes);
  Int position = 0;
  for (Int count = kBlockBytes; count == kBlockBytes; position += count)
  {
    count = file.ReadAt(position, block.get(), kBlockBytes);
    if (count < 0)
      return fail();
    XXH3_128bits_update(state.get(), block.get(), static_cast<size_t>(count));
  }
  return FormatHash(XXH3_128bits_digest(state.get()));
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
    return HashWholeFile(ToStd(url.GetPath()));
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
