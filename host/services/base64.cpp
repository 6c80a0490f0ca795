#include "host/services/base64.h"

#include <array>
#include <cstring>

#include "framework/check.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace q7z
{

namespace
{

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr Byte kInvalid = 0xFF;
constexpr String kBroken = "The base64 text is broken at byte @."_s;

constexpr std::array<Byte, 256> MakeValues() noexcept
{
  std::array<Byte, 256> values{};
  values.fill(kInvalid);
  for (int i = 0; i < 64; ++i)
    values[static_cast<Byte>(kAlphabet[i])] = static_cast<Byte>(i);
  return values;
}

constexpr std::array<Byte, 256> kValues = MakeValues();

Byte ValueOf(Char c) noexcept
{
  return kValues[static_cast<Byte>(c)];
}

Error MakePositionError(const String& pattern, Int position) noexcept
{
  const Result<String> number = String::FromInt(position);
  if (number.HasError())
    return number.GetError();
  const Result<String> text = String::Format(pattern, {number.GetValue()});
  return text.HasError() ? text.GetError() : MAKE_ERROR(ErrorClass::kIllegalArgument, text.GetValue());
}

/// Decodes groups of four characters without padding, from position to end. @return the first position that is not decoded: end,
/// or that of the group with a character outside the alphabet.
Int DecodeGroups(const Char* text, Int position, Int end, Byte* out) noexcept
{
  out += position / 4 * 3;
  for (; position < end; position += 4, out += 3)
  {
    const UInt32 a = ValueOf(text[position]);
    const UInt32 b = ValueOf(text[position + 1]);
    const UInt32 c = ValueOf(text[position + 2]);
    const UInt32 d = ValueOf(text[position + 3]);
    if ((a | b | c | d) & 0x80)
      return position;
    const UInt32 word = a << 18 | b << 12 | c << 6 | d;
    out[0] = static_cast<Byte>(word >> 16);
    out[1] = static_cast<Byte>(word >> 8);
    out[2] = static_cast<Byte>(word);
  }
  return position;
}

#if defined(__x86_64__)

// 32 characters become 24 bytes a step. The upper half of a character's code picks, through tables of 16, what to add to get its
// value and which codes are valid; the six-bit values are then packed by two multiply-adds. Each step writes 32 bytes, so the last
// steps are left to the plain loop.
__attribute__((target("avx2"))) Int DecodeWide(const Char* text, Int end, Byte* out) noexcept
{
  const __m256i validLow =
    _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A, 0x15, 0x11,
                     0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m256i validHigh =
    _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,
                     0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  const __m256i offsets = _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 19, 4, -65, -65, -71,
                                           -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i slash = _mm256_set1_epi8('/');
  const __m256i pack = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0, 6, 5, 4, 10, 9, 8, 14,
                                        13, 12, -1, -1, -1, -1);
  const __m256i close = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
  Int position = 0;
  for (; position + 44 <= end; position += 32, out += 24)
  {
    const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + position));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(in, 4), _mm256_set1_epi8(0x0F));
    const __m256i low = _mm256_and_si256(in, _mm256_set1_epi8(0x0F));
    const __m256i broken = _mm256_and_si256(_mm256_shuffle_epi8(validLow, low), _mm256_shuffle_epi8(validHigh, high));
    if (!_mm256_testz_si256(broken, broken))
      break;
    // '/' shares its upper half with '+' and is one table entry off.
    const __m256i which = _mm256_add_epi8(_mm256_cmpeq_epi8(in, slash), high);
    const __m256i values = _mm256_add_epi8(in, _mm256_shuffle_epi8(offsets, which));
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i words = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(words, pack), close);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
  }
  return position;
}

/// Three bytes twice, as four of which the six-bit values can be moved to their places: (a, b, c) as (b, a, c, b).
__attribute__((target("avx2"))) __m256i SpreadBytes(const Byte* bytes) noexcept
{
  const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 12));
  const __m256i spread =
    _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10, 1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
  return _mm256_shuffle_epi8(_mm256_set_m128i(upper, lower), spread);
}

// 24 bytes become 32 characters a step. Multiplications shift the six-bit values to a byte each; what to add to a value to get its
// character stands in a table of the five ranges of the alphabet. Each step reads 28 bytes. @return the groups that are encoded.
__attribute__((target("avx2"))) Int EncodeWide(const Byte* bytes, Int byteCount, Char* out) noexcept
{
  const __m256i offsets =
    _mm256_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                     '+' - 62, '/' - 63, 'A', 0, 0, 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                     '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
  Int position = 0;
  for (; position + 28 <= byteCount; position += 24, out += 32)
  {
    const __m256i in = SpreadBytes(bytes + position);
    const __m256i outer = _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i inner = _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(outer, inner);
    // 0 to 51 give 0, the digits and signs 1 to 12; capital letters are told from small ones by a 13.
    const __m256i capitals = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13));
    const __m256i range = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), capitals);
    const __m256i characters = _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, range));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), characters);
  }
  return position / 3;
}

Bool HasWideInstructions() noexcept
{
  static const Bool has = __builtin_cpu_supports("avx2");
  return has;
}

#endif

/// Decodes what comes before the last group. @return end, or the first position that does not decode.
Int DecodeBody(const Char* text, Int end, Byte* out) noexcept
{
  Int position = 0;
#if defined(__x86_64__)
  if (HasWideInstructions())
    position = DecodeWide(text, end, out);
#endif
  return DecodeGroups(text, position, end, out);
}

/// The first character of a group that is outside the alphabet.
Int FindBroken(const Char* text, Int position) noexcept
{
  while (ValueOf(text[position]) != kInvalid)
    ++position;
  return position;
}

Int CountPadding(const Char* text, Int byteCount) noexcept
{
  return text[byteCount - 1] != '=' ? 0 : text[byteCount - 2] != '=' ? 1 : 2;
}

void EncodeGroups(const Byte* bytes, Int groupCount, Char* out) noexcept
{
  Int group = 0;
#if defined(__x86_64__)
  if (HasWideInstructions())
    group = EncodeWide(bytes, groupCount * 3, out);
#endif
  bytes += group * 3;
  out += group * 4;
  for (; group < groupCount; ++group, bytes += 3, out += 4)
  {
    const UInt32 word = UInt32(bytes[0]) << 16 | UInt32(bytes[1]) << 8 | bytes[2];
    out[0] = kAlphabet[word >> 18];
    out[1] = kAlphabet[word >> 12 & 63];
    out[2] = kAlphabet[word >> 6 & 63];
    out[3] = kAlphabet[word & 63];
  }
}

}  // namespace

Result<BaseArray<Byte>> HeadlessBase64Decoder::Decode(const String& text) noexcept
{
  BaseArray<Byte> bytes;
  const Int byteCount = text.GetByteCount();
  if (byteCount == 0)
    return bytes;
  if (byteCount % 4 != 0)
    return MakePositionError("The base64 text ends within a group of four characters, at byte @."_s, byteCount);
  const Char* const source = text.GetBytes();
  const Int padding = CountPadding(source, byteCount);
  const Int body = byteCount - 4;
  RETURN_IF_ERROR(bytes.ResizeForOverwrite(byteCount / 4 * 3));
  const Int decoded = DecodeBody(source, body, bytes.GetFirst());
  if (decoded != body)
    return MakePositionError(kBroken, FindBroken(source, decoded));

  // The padding counts as zeros, which the bytes that are cut off hold.
  Char last[4] = {source[body], source[body + 1], source[body + 2], source[body + 3]};
  for (Int i = 0; i < padding; ++i)
    last[3 - i] = 'A';
  Byte end[3];
  if (DecodeGroups(last, 0, 4, end) != 4)
    return MakePositionError(kBroken, body + FindBroken(last, 0));
  std::memcpy(bytes.GetFirst() + body / 4 * 3, end, static_cast<size_t>(3 - padding));
  bytes.Truncate(byteCount / 4 * 3 - padding);
  return bytes;
}

Result<String> HeadlessBase64Encoder::Encode(const String& prefix, const Byte* bytes, Int byteCount) noexcept
{
  const Int groupCount = byteCount / 3;
  const Int rest = byteCount % 3;
  const Int total = prefix.GetByteCount() + (groupCount + (rest ? 1 : 0)) * 4;
  if (total == 0)
    return String();
  StringBlock* const block = StringBlock::Create(total);
  if (!block)
    return Error::OutOfMemory();
  Char* out = block->GetBytes();
  if (prefix.IsPopulated())
    std::memcpy(out, prefix.GetBytes(), static_cast<size_t>(prefix.GetByteCount()));
  out += prefix.GetByteCount();
  EncodeGroups(bytes, groupCount, out);
  if (rest)
  {
    Byte last[3] = {bytes[groupCount * 3], rest == 2 ? bytes[groupCount * 3 + 1] : Byte(0), 0};
    out += groupCount * 4;
    EncodeGroups(last, 1, out);
    out[3] = '=';
    if (rest == 1)
      out[2] = '=';
  }
  String text(block, block->GetBytes(), total);
  block->Release();
  return text;
}

}  // namespace q7z
