#include "framework/string.h"

#include <atomic>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>

#include "framework/memory.h"
#include "framework/result.h"

namespace q7z
{

namespace
{

constexpr Bool IsSpace(Char byte) noexcept
{
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

constexpr Char ToLower(Char byte) noexcept
{
  return byte >= 'A' && byte <= 'Z' ? static_cast<Char>(byte + ('a' - 'A')) : byte;
}

/// Bytes of the character at the front of text; 1 for a broken byte.
Int GetCharacterLength(std::string_view text) noexcept
{
  const Byte first = static_cast<Byte>(text[0]);
  const size_t length = first < 0xC2 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 1;
  if (length > text.size())
    return 1;
  for (size_t i = 1; i < length; ++i)
  {
    if ((static_cast<Byte>(text[i]) & 0xC0) != 0x80)
      return 1;
  }
  return static_cast<Int>(length);
}

/// A text of its own that a writer fills.
template <typename Write>
Result<String> MakeString(Int byteCount, const Write& write) noexcept
{
  if (byteCount == 0)
    return String();
  StringBlock* const block = StringBlock::Create(byteCount);
  if (!block)
    return Error::OutOfMemory();
  write(block->GetBytes());
  String result(block, block->GetBytes(), byteCount);
  block->Release();
  return result;
}

}  // namespace

StringBlock* StringBlock::Create(Int byteCount) noexcept
{
  if (byteCount < 0 || byteCount > INT64_MAX - static_cast<Int>(sizeof(StringBlock)))
    return nullptr;
  void* const memory = AllocateMemory(static_cast<Int>(sizeof(StringBlock)) + byteCount);
  return memory ? ::new (memory) StringBlock(byteCount) : nullptr;
}

void StringBlock::AddReference() noexcept
{
  std::atomic_ref<Int>(_references).fetch_add(1, std::memory_order_relaxed);
}

void StringBlock::Release() noexcept
{
  if (std::atomic_ref<Int>(_references).fetch_sub(1, std::memory_order_acq_rel) == 1)
    FreeMemory(this, static_cast<Int>(sizeof(StringBlock)) + _byteCount);
}

String::String(StringBlock* block, const Char* text, Int byteCount) noexcept : _text(text), _byteCount(byteCount), _block(block)
{
  if (_block)
    _block->AddReference();
}

Result<String> String::Create(std::string_view bytes) noexcept
{
  return MakeString(static_cast<Int>(bytes.size()), [&](Char* out) { std::memcpy(out, bytes.data(), bytes.size()); });
}

Result<String> String::FromInt(Int value) noexcept
{
  Char text[24];
  const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
  return Create({text, static_cast<size_t>(end - text)});
}

Result<String> String::FromFloat(Float value) noexcept
{
  if (std::isnan(value))
    return "nan"_s;
  if (std::isinf(value))
    return value > 0 ? "inf"_s : "-inf"_s;
  Char text[32];
  const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
  return Create({text, static_cast<size_t>(end - text)});
}

Result<String> String::Join(std::initializer_list<String> parts) noexcept
{
  Int byteCount = 0;
  for (const String& part : parts)
    byteCount += part.GetByteCount();
  return MakeString(byteCount,
                    [&](Char* out)
                    {
                      for (const String& part : parts)
                      {
                        if (part.IsEmpty())
                          continue;
                        std::memcpy(out, part.GetBytes(), static_cast<size_t>(part.GetByteCount()));
                        out += part.GetByteCount();
                      }
                    });
}

Result<String> String::Format(const String& pattern, std::initializer_list<String> parts) noexcept
{
  Int byteCount = 0;
  size_t used = 0;
  for (const Char byte : pattern.GetView())
    byteCount += byte == '@' && used < parts.size() ? parts.begin()[used++].GetByteCount() : 1;
  return MakeString(byteCount,
                    [&](Char* out)
                    {
                      size_t next = 0;
                      for (const Char byte : pattern.GetView())
                      {
                        if (byte != '@' || next >= parts.size())
                        {
                          *out++ = byte;
                          continue;
                        }
                        const String& part = parts.begin()[next++];
                        if (part.IsPopulated())
                          std::memcpy(out, part.GetBytes(), static_cast<size_t>(part.GetByteCount()));
                        out += part.GetByteCount();
                      }
                    });
}

Result<String> String::Copy() const noexcept
{
  return Create(GetView());
}

String String::GetPart(Int position, Int byteCount) const noexcept
{
  position = position < 0 ? 0 : position > _byteCount ? _byteCount : position;
  const Int rest = _byteCount - position;
  byteCount = byteCount < 0 ? 0 : byteCount > rest ? rest : byteCount;
  return String(_block, _text + position, byteCount);
}

String String::GetFirstCharacters(Int characterCount) const noexcept
{
  Int position = 0;
  for (Int i = 0; i < characterCount && position < _byteCount; ++i)
    position += GetCharacterLength(GetView().substr(static_cast<size_t>(position)));
  return GetPart(0, position);
}

String String::Trim() const noexcept
{
  Int first = 0;
  Int end = _byteCount;
  while (first < end && IsSpace(_text[first]))
    ++first;
  while (end > first && IsSpace(_text[end - 1]))
    --end;
  return GetPart(first, end - first);
}

Int String::FindFirst(Char byte) const noexcept
{
  const size_t position = GetView().find(byte);
  return position == std::string_view::npos ? -1 : static_cast<Int>(position);
}

Int String::FindLast(Char byte) const noexcept
{
  const size_t position = GetView().rfind(byte);
  return position == std::string_view::npos ? -1 : static_cast<Int>(position);
}

Bool String::ParseInt(Int& value) const noexcept
{
  Int parsed = 0;
  const Char* const end = _text + _byteCount;
  const auto result = std::from_chars(_text, end, parsed);
  if (_byteCount == 0 || result.ec != std::errc() || result.ptr != end)
    return false;
  value = parsed;
  return true;
}

Bool String::EqualsIgnoringCase(const String& other) const noexcept
{
  if (_byteCount != other._byteCount)
    return false;
  for (Int i = 0; i < _byteCount; ++i)
  {
    if (ToLower(_text[i]) != ToLower(other._text[i]))
      return false;
  }
  return true;
}

}  // namespace q7z
