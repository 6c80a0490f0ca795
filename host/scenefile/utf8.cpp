#include "host/scenefile/utf8.h"

namespace q7z
{

namespace
{

struct ByteRange
{
  Byte first = 0x80;
  Byte last = 0xBF;
};

/// The length that a leading byte announces, 0 for none.
size_t GetAnnouncedLength(Byte lead) noexcept
{
  if (lead < 0x80)
    return 1;
  if (lead < 0xC2 || lead > 0xF4)
    return 0;
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The second bytes that neither make the sequence longer than it needs to be, nor a surrogate, nor too large.
ByteRange GetSecondBytes(Byte lead) noexcept
{
  switch (lead)
  {
    case 0xE0: return {0xA0, 0xBF};
    case 0xED: return {0x80, 0x9F};
    case 0xF0: return {0x90, 0xBF};
    case 0xF4: return {0x80, 0x8F};
    default: return {};
  }
}

}  // namespace

size_t GetUtf8Length(std::string_view text) noexcept
{
  const size_t length = GetAnnouncedLength(static_cast<Byte>(text[0]));
  if (length > text.size())
    return 0;
  ByteRange allowed = GetSecondBytes(static_cast<Byte>(text[0]));
  for (size_t i = 1; i < length; ++i)
  {
    const Byte byte = static_cast<Byte>(text[i]);
    if (byte < allowed.first || byte > allowed.last)
      return 0;
    allowed = {};
  }
  return length;
}

Bool IsControlSequence(std::string_view sequence) noexcept
{
  const Byte first = static_cast<Byte>(sequence[0]);
  return first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<Byte>(sequence[1]) < 0xA0);
}

}  // namespace q7z
