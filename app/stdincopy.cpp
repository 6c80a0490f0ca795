#include "app/stdincopy.h"

#include "app/signals.h"
#include "host/platform/platform.h"
#include "host/platform/process.h"

namespace q7z::app
{

namespace
{

constexpr Int kBlockBytes = Int(1) << 20;

/// Writes stdin to a file. @return whether all was copied up to the end, or to a signal.
bool DrainStdin(PlatformFile& file)
{
  std::string block(static_cast<size_t>(kBlockBytes), '\0');
  InterruptibleInput input;
  for (;;)
  {
    const Int count = input.Read(block.data(), kBlockBytes, InterruptGuard::IsInterrupted);
    if (count <= 0)
      return count == 0;
    if (!file.WriteAt(file.GetLength(), block.data(), count))
      return false;
  }
}

}  // namespace

StdinCopy::~StdinCopy()
{
  if (!_folder.empty())
    RemoveTree(_folder);
}

std::string StdinCopy::Read(const std::string& name)
{
  const std::string failure = "cannot keep stdin in a temporary file: ";
  _folder = MakeTemporaryFolder();
  if (_folder.empty())
    return failure + GetSystemReason();
  _path = _folder + "/" + name;
  PlatformFile file;
  const bool copied = file.Open(_path.c_str(), PlatformOpen::kReplace) && DrainStdin(file) && file.Close();
  return copied ? "" : failure + GetSystemReason();
}

}  // namespace q7z::app
