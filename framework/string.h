#pragma once

// String: UTF-8 text with value semantics. The bytes never change once a String shows them: copies share one counted block,
// texts written as "abc"_s point at static storage, and a part of a long text shares its block. Texts are not terminated by a
// zero. Everything that needs memory returns a Result.
//
// A text from a literal of the plug-in lives as long as the plug-in's library; what is to outlive it takes Copy().

#include <initializer_list>
#include <string_view>

#include "framework/types.h"

namespace q7z
{

template <typename T>
class [[nodiscard]] Result;
template <typename T>
class BaseArray;

/// The counted owner of text bytes. Parsers make one block for many Strings.
class StringBlock
{
public:
  /// @return a block with room for byteCount bytes and one reference, or null without memory.
  static StringBlock* Create(Int byteCount) noexcept;
  Char* GetBytes() noexcept { return reinterpret_cast<Char*>(this + 1); }
  Int GetByteCount() const noexcept { return _byteCount; }
  void AddReference() noexcept;
  void Release() noexcept;

private:
  explicit StringBlock(Int byteCount) noexcept : _byteCount(byteCount) {}
  Int _references = 1;  // counted atomically
  Int _byteCount;
};

class String
{
public:
  constexpr String() noexcept = default;

  /// Static text: bytes must live as long as any copy of the String.
  constexpr String(const Char* staticText, Int byteCount) noexcept : _text(staticText), _byteCount(byteCount) {}

  /// A part of a block; takes a reference of its own.
  String(StringBlock* block, const Char* text, Int byteCount) noexcept;

  String(const String& other) noexcept : _text(other._text), _byteCount(other._byteCount), _block(other._block)
  {
    if (_block)
      _block->AddReference();
  }
  String(String&& other) noexcept : _text(other._text), _byteCount(other._byteCount), _block(other._block)
  {
    other._text = nullptr;
    other._byteCount = 0;
    other._block = nullptr;
  }
  String& operator=(const String& other) noexcept
  {
    String copy(other);
    Swap(copy);
    return *this;
  }
  String& operator=(String&& other) noexcept
  {
    Swap(other);
    return *this;
  }
  constexpr ~String()
  {
    if (_block)
      _block->Release();
  }

  /// A text of its own with a copy of the bytes.
  static Result<String> Create(std::string_view bytes) noexcept;

  /// The decimal text of a whole number.
  static Result<String> FromInt(Int value) noexcept;

  /// The shortest text that reads back as the same number; "nan", "inf", "-inf" for the others.
  static Result<String> FromFloat(Float value) noexcept;

  /// All parts, one behind the other.
  static Result<String> Join(std::initializer_list<String> parts) noexcept;

  /// The pattern with each "@" replaced, in order, by the next of the parts; an "@" without a part stays.
  static Result<String> Format(const String& pattern, std::initializer_list<String> parts) noexcept;

  /// A compact text of its own, independent of the block or the library that holds this one.
  Result<String> Copy() const noexcept;

  /// Bytes [position, position + byteCount), clamped to the text; shares the block.
  String GetPart(Int position, Int byteCount) const noexcept;

  /// The first characterCount Unicode characters (a broken byte counts as one); shares the block.
  String GetFirstCharacters(Int characterCount) const noexcept;

  /// Without leading and trailing white space (blank, tab, CR, LF).
  String Trim() const noexcept;

  const Char* GetBytes() const noexcept { return _text; }
  Int GetByteCount() const noexcept { return _byteCount; }
  std::string_view GetView() const noexcept { return {_text, static_cast<size_t>(_byteCount)}; }
  Bool IsEmpty() const noexcept { return _byteCount == 0; }
  Bool IsPopulated() const noexcept { return _byteCount != 0; }

  Bool StartsWith(const String& prefix) const noexcept { return GetView().starts_with(prefix.GetView()); }

  /// @return the byte position of the first / last occurrence, or -1.
  Int FindFirst(Char byte) const noexcept;
  Int FindLast(Char byte) const noexcept;

  /// Reads the whole text as a decimal integer (optional minus); false when it is none or out of range.
  Bool ParseInt(Int& value) const noexcept;

  /// ASCII letters compare without regard to case; all other bytes as they are.
  Bool EqualsIgnoringCase(const String& other) const noexcept;

  constexpr UInt GetHash() const noexcept { return HashBytes(_text, _byteCount); }

  /// A 64-bit mix of bytes, usable at compile time; equal bytes give equal hashes on every machine.
  static constexpr UInt HashBytes(const Char* bytes, Int byteCount) noexcept
  {
    UInt hash = 0xcbf29ce484222325u;
    for (Int i = 0; i < byteCount; ++i)
      hash = (hash ^ static_cast<Byte>(bytes[i])) * 0x100000001b3u;
    return hash ^ (hash >> 32);
  }

  void Swap(String& other) noexcept
  {
    const Char* text = _text;
    const Int byteCount = _byteCount;
    StringBlock* block = _block;
    _text = other._text;
    _byteCount = other._byteCount;
    _block = other._block;
    other._text = text;
    other._byteCount = byteCount;
    other._block = block;
  }

  friend Bool operator==(const String& a, const String& b) noexcept
  {
    return a._byteCount == b._byteCount && (a._text == b._text || a.GetView() == b.GetView());
  }
  friend auto operator<=>(const String& a, const String& b) noexcept { return a.GetView() <=> b.GetView(); }

private:
  const Char* _text = nullptr;
  Int _byteCount = 0;
  StringBlock* _block = nullptr;  // null for static text
};

constexpr String operator""_s(const Char* text, size_t byteCount) noexcept
{
  return String(text, static_cast<Int>(byteCount));
}

}  // namespace q7z
