#include "host/services/jsonpayloads.h"

#include <charconv>

namespace q7z
{

namespace
{

// Payloads from here on are taken out.
constexpr size_t kLongPayload = 4096;
// Media type and parameters in front of a payload.
constexpr size_t kLongestPrefix = 128;

constexpr std::string_view kUriStart = "\"data:";
constexpr std::string_view kEncodingMark = ";base64,";
// Stands for a payload, followed by its number. No base64 text holds it.
constexpr char kPayloadMark = '#';
// A mark with its number is no longer than this, and much shorter than what it stands for.
constexpr size_t kLongestMark = 24;

constexpr size_t kBlock = 64;

bool IsPlain(char byte) noexcept
{
  return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\';
}

/// Without a branch for each byte, so that the compiler can test many at once.
bool IsPlainBlock(const char* bytes) noexcept
{
  unsigned special = 0;
  for (size_t i = 0; i < kBlock; ++i)
  {
    const signed char byte = static_cast<signed char>(bytes[i]);
    special |= static_cast<unsigned>((byte < 0x20) | (byte == 0x7F) | (byte == '"') | (byte == '\\'));
  }
  return !special;
}

/// The length of the printable ASCII at the start of text that holds neither a quote nor a backslash.
size_t GetPlainLength(std::string_view text) noexcept
{
  size_t position = 0;
  while (position + kBlock <= text.size() && IsPlainBlock(text.data() + position))
    position += kBlock;
  while (position < text.size() && IsPlain(text[position]))
    ++position;
  return position;
}

/// The quote that opens the string of a data URI whose payload begins at `at`; npos when there is none.
size_t FindUriStart(std::string_view text, size_t at) noexcept
{
  const size_t nearby = at < kLongestPrefix ? 0 : at - kLongestPrefix;
  const size_t quote = text.substr(nearby, at - nearby).rfind('"');
  if (quote == std::string_view::npos)
    return quote;
  const size_t start = nearby + quote;
  const bool isUri = text.substr(start).starts_with(kUriStart) && (start == 0 || text[start - 1] != '\\') &&
                     GetPlainLength(text.substr(start + 1, at - start - 1)) == at - start - 1;
  return isUri ? start : std::string_view::npos;
}

}  // namespace

/// The first long payload behind `from`; an empty string when there is none.
JsonPayloads::Payload JsonPayloads::Find(std::string_view text, size_t from) const noexcept
{
  for (size_t mark = text.find(';', from); mark != std::string_view::npos; mark = text.find(';', mark + 1))
  {
    if (!text.substr(mark).starts_with(kEncodingMark))
      continue;
    const size_t at = mark + kEncodingMark.size();
    const size_t start = FindUriStart(text, at);
    if (start == std::string_view::npos)
      continue;
    const size_t length = GetPlainLength(text.substr(at));
    if (length >= kLongPayload && at + length < text.size() && text[at + length] == '"')
      return {text.substr(start + 1, at + length - start - 1), at - start - 1};
  }
  return {};
}

JsonPayloads::JsonPayloads(std::string_view text) : _text(text)
{
  for (Payload payload = Find(text, 0); !payload.string.empty();)
  {
    _payloads.push_back(payload);
    payload = Find(text, static_cast<size_t>(payload.string.data() - text.data()) + payload.string.size());
  }
}

size_t JsonPayloads::GetByteCount() const noexcept
{
  size_t byteCount = 0;
  for (const Payload& payload : _payloads)
    byteCount += payload.string.size() - payload.prefixLength;
  return byteCount;
}

std::string JsonPayloads::MakeShortenedText(size_t spareByteCount) const
{
  size_t byteCount = _text.size() + spareByteCount;
  for (const Payload& payload : _payloads)
    byteCount -= payload.string.size() - payload.prefixLength - kLongestMark;
  std::string shortened;
  shortened.reserve(byteCount);
  size_t kept = 0;
  for (size_t i = 0; i < _payloads.size(); ++i)
  {
    const Payload& payload = _payloads[i];
    const size_t start = static_cast<size_t>(payload.string.data() - _text.data());
    shortened.append(_text.substr(kept, start + payload.prefixLength - kept)).append(1, kPayloadMark).append(std::to_string(i));
    kept = start + payload.string.size();
  }
  shortened.append(_text.substr(kept));
  return shortened;
}

std::string_view JsonPayloads::FindOriginal(std::string_view parsed) noexcept
{
  if (_payloads.empty() || parsed.size() > kLongestPrefix + kLongestMark)
    return {};
  const size_t mark = parsed.rfind(kPayloadMark);
  if (mark == std::string_view::npos || !parsed.substr(0, mark).ends_with(kEncodingMark))
    return {};
  size_t number = 0;
  const auto [end, error] = std::from_chars(parsed.data() + mark + 1, parsed.data() + parsed.size(), number);
  if (error != std::errc() || end != parsed.data() + parsed.size() || number >= _payloads.size())
    return {};
  Payload& payload = _payloads[number];
  if (parsed.substr(0, mark) != payload.string.substr(0, payload.prefixLength))
    return {};
  // A string that merely looks like a mark makes this the second time, now or later.
  _foundTwice = _foundTwice || payload.found;
  _foundCount += payload.found ? 0 : 1;
  payload.found = true;
  return payload.string;
}

}  // namespace q7z
