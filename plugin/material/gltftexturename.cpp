#include "plugin/material/gltftexturename.h"

#include "framework/basearray.h"

namespace q7z
{

namespace
{

constexpr Int kMaximumNameBytes = 200;
constexpr String kRefusedBytes = "/\\:*?\"<>|\x7f"_s;
constexpr String kDeviceNames[] = {"CON"_s, "PRN"_s, "AUX"_s, "NUL"_s};
constexpr String kPortNames[] = {"COM"_s, "LPT"_s};

constexpr Bool IsContinuation(Char byte) noexcept
{
  return (static_cast<Byte>(byte) & 0xC0) == 0x80;
}

/// The first bytes of a text, without a part of a character at the end.
String CutAtCharacter(const String& text, Int byteCount) noexcept
{
  if (text.GetByteCount() <= byteCount)
    return text;
  while (byteCount > 0 && IsContinuation(text.GetBytes()[byteCount]))
    --byteCount;
  return text.GetPart(0, byteCount);
}

Bool IsRefused(Char byte) noexcept
{
  return static_cast<Byte>(byte) < 0x20 || kRefusedBytes.FindFirst(byte) >= 0;
}

/// The control characters U+0080 to U+009F have two bytes.
Bool IsWideControl(const String& text, Int position) noexcept
{
  if (position + 1 >= text.GetByteCount() || static_cast<Byte>(text.GetBytes()[position]) != 0xC2)
    return false;
  const Byte second = static_cast<Byte>(text.GetBytes()[position + 1]);
  return second >= 0x80 && second < 0xA0;
}

/// Names of devices, with whatever stands behind their first dot.
Bool IsReserved(const String& name) noexcept
{
  const Int dot = name.FindFirst('.');
  const String stem = (dot < 0 ? name : name.GetPart(0, dot)).Trim();
  for (const String& device : kDeviceNames)
  {
    if (stem.EqualsIgnoringCase(device))
      return true;
  }
  for (const String& port : kPortNames)
  {
    const Char digit = stem.GetByteCount() == 4 ? stem.GetBytes()[3] : '\0';
    if (digit >= '0' && digit <= '9' && stem.GetPart(0, 3).EqualsIgnoringCase(port))
      return true;
  }
  return false;
}

Result<String> MakeNamePart(const String& materialName) noexcept
{
  const String name = CutAtCharacter(materialName, kMaximumNameBytes);
  BaseArray<Char> bytes;
  RETURN_IF_ERROR(bytes.Reserve(name.GetByteCount()));
  for (Int i = 0; i < name.GetByteCount(); ++i)
  {
    const Bool isWideControl = IsWideControl(name, i);
    const Char byte = name.GetBytes()[i];
    RETURN_IF_ERROR(bytes.Append(isWideControl || IsRefused(byte) ? '_' : byte));
    i += isWideControl ? 1 : 0;
  }
  if (name.StartsWith("."_s) || IsReserved(name))
    bytes[0] = '_';
  return String::Create({bytes.GetFirst(), static_cast<size_t>(bytes.GetCount())});
}

}  // namespace

Result<String> MakeTextureFileName(const String& materialName, const String& key, const String& extension) noexcept
{
  ASSIGN_OR_RETURN(const String name, MakeNamePart(materialName));
  return String::Format("@_@.@"_s, {name, key, extension});
}

}  // namespace q7z
