#include "host/services/filereading.h"

#include <cstring>

#include "framework/check.h"
#include "host/services/wholefile.h"

namespace q7z
{

namespace
{

Result<BlockOwner> ReadFile(const std::string& path, Int padding)
{
  const auto fail = [&] { return MakeIoError("Cannot read \"" + path + "\": " + GetSystemReason()); };
  PlatformFile file;
  if (!file.Open(path.c_str(), PlatformOpen::kRead))
    return fail();
  const Int length = file.GetLength();
  BlockOwner block(StringBlock::Create(length + padding));
  if (!block)
    return Error::OutOfMemory();
  Char* const bytes = block.Get()->GetBytes();
  const Int count = file.ReadAt(0, bytes, length);
  if (count < 0)
    return fail();
  if (count != length)
    return MakeIoError("Cannot read \"" + path + "\": it has become shorter meanwhile");
  std::memset(bytes + length, 0, static_cast<size_t>(padding));
  return block;
}

}  // namespace

Result<BlockOwner> ReadFileIntoBlock(const String& path, Int padding) noexcept
{
  try
  {
    return ReadFile(ToStd(path), padding);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

std::string WriteFileWhole(const std::string& path, const void* bytes, size_t byteCount, std::string* reason)
{
  WholeFile file;
  std::string failure = file.Open(path);
  if (failure.empty())
  {
    std::fwrite(bytes, 1, byteCount, file.GetStream());  // what fails here fails the commit
    failure = file.Commit();
  }
  if (reason && !failure.empty())
    *reason = file.GetReason();
  return failure;
}

Error MakeIoError(const std::string& text) noexcept
{
  const Result<String> message = String::Create(text);
  return message.HasError() ? message.GetError() : MAKE_ERROR(ErrorClass::kIo, message.GetValue());
}

}  // namespace q7z
