// JSON reading, on simdjson. Its parser that is fast on every machine copies all strings; the payload of a data URI, which may be
// most of a file, is therefore cut out of the text before it is parsed, and stays where it was read.

#include <simdjson.h>

#include <array>
#include <cstring>
#include <vector>

#include "framework/check.h"
#include "host/services/filereading.h"
#include "host/services/headlessjson.h"

namespace q7z
{

static_assert(kJsonPadding >= static_cast<Int>(simdjson::SIMDJSON_PADDING));

namespace
{

namespace dom = simdjson::dom;

// Payloads from here on are cut out.
constexpr size_t kLongPayload = 4096;
// Media type and parameters in front of a payload.
constexpr size_t kLongestPrefix = 128;

constexpr Int kPoolBytes = Int(1) << 16;

constexpr std::string_view kEncodingMark = ";base64,";
constexpr std::string_view kUriStart = "\"data:";
// Stands for a payload, followed by its number. No base64 text holds it.
constexpr char kCutMark = '#';

/// Short texts, packed into shared blocks.
class TextPool
{
public:
  TextPool() noexcept = default;
  TextPool(const TextPool&) = delete;
  TextPool& operator=(const TextPool&) = delete;
  ~TextPool()
  {
    if (_block)
      _block->Release();
  }

  Result<String> Add(std::string_view text) noexcept
  {
    if (text.empty())
      return String();
    const Int byteCount = static_cast<Int>(text.size());
    if (byteCount > kPoolBytes / 16)
      return String::Create(text);
    if (!_block || _used + byteCount > kPoolBytes)
      RETURN_IF_ERROR(Grow());
    Char* const place = _block->GetBytes() + _used;
    std::memcpy(place, text.data(), text.size());
    _used += byteCount;
    return String(_block, place, byteCount);
  }

private:
  Result<void> Grow() noexcept
  {
    StringBlock* const block = StringBlock::Create(kPoolBytes);
    if (!block)
      return Error::OutOfMemory();
    if (_block)
      _block->Release();
    _block = block;
    _used = 0;
    return {};
  }

  StringBlock* _block = nullptr;
  Int _used = 0;
};

/// The length of the printable ASCII at the start of text that holds neither a quote nor a backslash. A tail of up to 63 bytes is
/// looked at byte by byte.
size_t GetPlainLength(std::string_view text) noexcept
{
  const auto isPlain = [](char byte) { return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\'; };
  size_t position = 0;
  for (; position + 64 <= text.size(); position += 64)
  {
    unsigned broken = 0;
    for (size_t i = 0; i < 64; ++i)
    {
      const signed char byte = static_cast<signed char>(text[position + i]);
      broken |= static_cast<unsigned>((byte < 0x20) | (byte == 0x7F) | (byte == '"') | (byte == '\\'));
    }
    if (broken)
      break;
  }
  while (position < text.size() && isPlain(text[position]))
    ++position;
  return position;
}

/// A text whose long data URI payloads are cut out, each replaced by the mark and its number.
class CutText
{
public:
  /// Looks for payloads; without any the text stays as it is.
  explicit CutText(std::string_view text)
  {
    size_t kept = 0;
    for (size_t at = FindMark(text, 0); at != std::string_view::npos; at = FindMark(text, at))
    {
      at += kEncodingMark.size();
      if (at < text.size() && text[at] == kCutMark)
      {
        // The file uses the mark itself, so nothing may be cut.
        _payloads.clear();
        return;
      }
      const size_t length = GetPayloadLength(text, at);
      if (length < kLongPayload)
        continue;
      _text.append(text.substr(kept, at - kept));
      _text += kCutMark + std::to_string(_payloads.size());
      _payloads.push_back(text.substr(at, length));
      kept = at += length;
    }
    if (!_payloads.empty())
      _text.append(text.substr(kept));
  }

  Bool IsCut() const noexcept { return !_payloads.empty(); }
  const std::string& GetText() const noexcept { return _text; }

  /// The whole string, in the original text, that a parsed string stands for; nothing when it is an ordinary one.
  std::string_view FindOriginal(std::string_view parsed) const noexcept
  {
    const size_t mark = parsed.rfind(kCutMark);
    if (_payloads.empty() || mark == std::string_view::npos || !parsed.substr(0, mark).ends_with(kEncodingMark))
      return {};
    size_t number = 0;
    for (const char digit : parsed.substr(mark + 1))
    {
      if (digit < '0' || digit > '9' || number >= _payloads.size())
        return {};
      number = number * 10 + static_cast<size_t>(digit - '0');
    }
    if (number >= _payloads.size())
      return {};
    // What stands before the payload was not touched, so it lies in front of it in the original, too.
    const std::string_view payload = _payloads[number];
    return {payload.data() - mark, payload.size() + mark};
  }

private:
  static size_t FindMark(std::string_view text, size_t from) noexcept
  {
    for (size_t at = text.find(';', from); at != std::string_view::npos; at = text.find(';', at + 1))
    {
      if (text.substr(at).starts_with(kEncodingMark))
        return at;
    }
    return std::string_view::npos;
  }

  /// The bytes of a payload that ends with its string, and whose string begins with "data: a few bytes before; else 0.
  static size_t GetPayloadLength(std::string_view text, size_t at) noexcept
  {
    const size_t nearby = at < kLongestPrefix ? 0 : at - kLongestPrefix;
    const size_t quote = text.substr(nearby, at - nearby).rfind('"');
    if (quote == std::string_view::npos)
      return 0;
    const size_t start = nearby + quote;
    const Bool isUri = text.substr(start).starts_with(kUriStart) && (start == 0 || text[start - 1] != '\\') &&
                       GetPlainLength(text.substr(start + 1, at - start - 1)) == at - start - 1;
    if (!isUri)
      return 0;
    const size_t length = GetPlainLength(text.substr(at));
    return at + length < text.size() && text[at + length] == '"' ? length : 0;
  }

  std::string _text;
  std::vector<std::string_view> _payloads;
};

struct ArenaOwner
{
  ~ArenaOwner()
  {
    if (arena)
      arena->Release();
  }
  DataArena* arena = nullptr;
};

/// Builds the Data of one document, value by value. Recursion goes as deep as the parser let the text nest.
class DocumentBuilder
{
public:
  DocumentBuilder(StringBlock* block, const CutText& cut) noexcept : _block(block), _cut(cut) {}

  Result<Data> Build(const dom::element& root) noexcept
  {
    _arena.arena = DataArena::Create();
    if (!_arena.arena)
      return Error::OutOfMemory();
    return BuildValue(root);
  }

private:
  Result<Data> BuildValue(const dom::element& value) noexcept
  {
    switch (value.type())
    {
      case dom::element_type::OBJECT: return BuildObject(value);
      case dom::element_type::ARRAY: return BuildArray(value);
      case dom::element_type::STRING: return BuildString(std::string_view(value));
      case dom::element_type::INT64: return Data(static_cast<Int>(int64_t(value)));
      case dom::element_type::UINT64:  // beyond 63 bits
        return Data(static_cast<Float>(uint64_t(value)));
      case dom::element_type::DOUBLE: return Data(double(value));
      case dom::element_type::BOOL: return Data(bool(value));
      case dom::element_type::NULL_VALUE: break;
    }
    return Data();
  }

  Result<Data> BuildArray(const dom::array& array) noexcept
  {
    const Int first = _values.GetCount();
    for (const dom::element element : array)
    {
      ASSIGN_OR_RETURN(Data data, BuildValue(element));
      RETURN_IF_ERROR(_values.Append(std::move(data)));
    }
    Result<Data> built = Data::CreateArray(_values.begin() + first, _values.GetCount() - first, _arena.arena);
    _values.Truncate(first);
    return built;
  }

  Result<Data> BuildObject(const dom::object& object) noexcept
  {
    const Int first = _members.GetCount();
    for (const dom::key_value_pair field : object)
    {
      ASSIGN_OR_RETURN(const DataKey key, BuildKey(field.key));
      ASSIGN_OR_RETURN(Data data, BuildValue(field.value));
      RETURN_IF_ERROR(_members.Append(DataMember{key, std::move(data)}));
    }
    Result<DataDictionary> built = DataDictionary::Create(_members.begin() + first, _members.GetCount() - first, _arena.arena);
    _members.Truncate(first);
    if (built.HasError())
      return built.GetError();
    return Data(std::move(built).GetValue());
  }

  /// The same name gives the same bytes, while the small cache holds it.
  Result<DataKey> BuildKey(std::string_view name) noexcept
  {
    const UInt hash = String::HashBytes(name.data(), static_cast<Int>(name.size()));
    String& cached = _names[hash % _names.size()];
    if (cached.IsEmpty() || cached.GetView() != name)
    {
      ASSIGN_OR_RETURN(cached, _pool.Add(name));
    }
    return DataKey(cached, hash);
  }

  Result<Data> BuildString(std::string_view text) noexcept
  {
    const std::string_view original = _cut.FindOriginal(text);
    if (!original.empty())
      return Data(String(_block, original.data(), static_cast<Int>(original.size())));
    ASSIGN_OR_RETURN(String string, _pool.Add(text));
    return Data(std::move(string));
  }

  StringBlock* _block;
  const CutText& _cut;
  ArenaOwner _arena;
  TextPool _pool;
  std::array<String, 256> _names;
  BaseArray<Data> _values;         // of the arrays that are open
  BaseArray<DataMember> _members;  // of the objects that are open
};

Error MakeError(simdjson::error_code code) noexcept
{
  if (code == simdjson::MEMALLOC)
    return Error::OutOfMemory();
  const std::string_view reason = simdjson::error_message(code);
  const Result<String> text =
    String::Format("The JSON text is broken: @"_s, {String(reason.data(), static_cast<Int>(reason.size()))});
  return text.HasError() ? text.GetError() : MAKE_ERROR(ErrorClass::kUnexpected, text.GetValue());
}

}  // namespace

Result<Data> ParseJson(StringBlock* block, const Char* text, Int byteCount) noexcept
{
  try
  {
    if (byteCount >= 3 && std::memcmp(text, "\xEF\xBB\xBF", 3) == 0)
      return MAKE_ERROR(ErrorClass::kUnexpected, "The JSON text begins with a byte order mark."_s);
    const std::string_view whole(text, static_cast<size_t>(byteCount));
    const CutText cut(whole);
    const simdjson::padded_string shortened = cut.IsCut() ? simdjson::padded_string(cut.GetText()) : simdjson::padded_string();
    dom::parser parser;
    dom::element root;
    const auto error = cut.IsCut() ? parser.parse(shortened).get(root)
                                   : parser.parse(reinterpret_cast<const uint8_t*>(text), whole.size(), false).get(root);
    if (error)
      return MakeError(error);
    return DocumentBuilder(block, cut).Build(root);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<BaseArray<Data>> HeadlessJson::ParseFile(const Url& url) noexcept
{
  ASSIGN_OR_RETURN(const BlockOwner block, ReadFileIntoBlock(url.GetPath(), kJsonPadding));
  ASSIGN_OR_RETURN(Data value, ParseJson(block.Get(), block.Get()->GetBytes(), block.Get()->GetByteCount() - kJsonPadding));
  BaseArray<Data> values;
  RETURN_IF_ERROR(values.Append(std::move(value)));
  return values;
}

Result<BaseArray<Data>> HeadlessJson::ParseBytes(BaseArray<Byte> bytes) noexcept
{
  const Int byteCount = bytes.GetCount();
  const BlockOwner block(StringBlock::Create(byteCount + kJsonPadding));
  if (!block)
    return Error::OutOfMemory();
  if (byteCount)
    std::memcpy(block.Get()->GetBytes(), bytes.GetFirst(), static_cast<size_t>(byteCount));
  std::memset(block.Get()->GetBytes() + byteCount, 0, static_cast<size_t>(kJsonPadding));
  bytes.Reset();
  ASSIGN_OR_RETURN(Data value, ParseJson(block.Get(), block.Get()->GetBytes(), byteCount));
  BaseArray<Data> values;
  RETURN_IF_ERROR(values.Append(std::move(value)));
  return values;
}

}  // namespace q7z
