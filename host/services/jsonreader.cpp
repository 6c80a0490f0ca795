// JSON reading, on simdjson. Of its two parsers the one that is fast on every machine copies all strings; the long ones, the
// payloads of data URIs, are therefore taken out of the text before it is parsed, and stay where they were read.

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "framework/check.h"
#include "host/services/filereading.h"
#include "host/services/headlessjson.h"
#include "host/services/jsonpayloads.h"

namespace q7z
{

static_assert(kJsonPadding >= static_cast<Int>(simdjson::SIMDJSON_PADDING));

namespace
{

namespace dom = simdjson::dom;

// The library makes its parser on first use, and ends the process when there is no memory for it. Asked for before main, that
// happens while nothing is at stake.
[[maybe_unused]] const std::string& g_parserName = simdjson::get_active_implementation()->name();

// Payloads pay for a text without them where they make up more than one in so many of its bytes.
constexpr size_t kPayloadShare = 4;
// Longer texts are not packed.
constexpr Int kLongestPacked = Int(4) << 10;
constexpr Int kLargestPoolBlock = Int(64) << 10;
// Whole numbers of fewer digits fit 64 bits.
constexpr size_t kLongIntegerDigits = 19;

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
    if (byteCount > kLongestPacked)
      return String::Create(text);
    StringBlock* const block = FindRoom(byteCount);
    if (!block)
      return Error::OutOfMemory();
    Char* const place = block->GetBytes() + _used;
    std::memcpy(place, text.data(), text.size());
    _used += byteCount;
    return String(block, place, byteCount);
  }

private:
  /// The block behind whose used bytes byteCount more fit; null without memory.
  StringBlock* FindRoom(Int byteCount) noexcept
  {
    if (_block && _used + byteCount <= _block->GetByteCount())
      return _block;
    // A small document keeps a small block alive.
    const Int doubled = _block ? _block->GetByteCount() * 2 : kLongestPacked;
    StringBlock* const block = StringBlock::Create(doubled < kLargestPoolBlock ? doubled : kLargestPoolBlock);
    if (!block)
      return nullptr;
    if (_block)
      _block->Release();
    _block = block;
    _used = 0;
    return block;
  }

  StringBlock* _block = nullptr;
  Int _used = 0;  // of the block
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

Error MakeParseError(std::string_view reason) noexcept
{
  const Result<String> text =
    String::Format("The JSON text is broken: @"_s, {String(reason.data(), static_cast<Int>(reason.size()))});
  return text.HasError() ? text.GetError() : MAKE_ERROR(ErrorClass::kUnexpected, text.GetValue());
}

Error MakeParseError(simdjson::error_code code) noexcept
{
  return code == simdjson::MEMALLOC ? Error::OutOfMemory() : MakeParseError(simdjson::error_message(code));
}

/// Builds the Data of one document, value by value.
class DocumentBuilder
{
public:
  /// @param payloads  what was taken out of the text, which lies in block; null for nothing.
  DocumentBuilder(StringBlock* block, JsonPayloads* payloads) noexcept : _block(block), _payloads(payloads) {}

  Result<Data> Build(const dom::element& root) noexcept
  {
    _arena.arena = DataArena::Create();
    if (!_arena.arena)
      return Error::OutOfMemory();
    return BuildValue(root, 0);
  }

private:
  /// @param depth  of the arrays and objects around the value. Recursion ends where the text may nest no deeper.
  Result<Data> BuildValue(const dom::element& value, size_t depth) noexcept
  {
    switch (value.type())
    {
      case dom::element_type::OBJECT: return BuildObject(value, depth + 1);
      case dom::element_type::ARRAY: return BuildArray(value, depth + 1);
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

  Result<Data> BuildArray(const dom::array& array, size_t depth) noexcept
  {
    if (depth > kDeepestJson)
      return MakeParseError(simdjson::DEPTH_ERROR);
    ASSIGN_OR_RETURN(const bool areFloats, TakeNumbers<double>(array, dom::element_type::DOUBLE, _floats));
    if (areFloats)
      return Data::CreateArray(_floats.begin(), _floats.GetCount(), _arena.arena);
    ASSIGN_OR_RETURN(const bool areInts, TakeNumbers<int64_t>(array, dom::element_type::INT64, _ints));
    if (areInts)
      return Data::CreateArray(_ints.begin(), _ints.GetCount(), _arena.arena);
    const Int first = _values.GetCount();
    for (const dom::element element : array)
    {
      ASSIGN_OR_RETURN(Data data, BuildValue(element, depth));
      RETURN_IF_ERROR(_values.Append(std::move(data)));
    }
    Result<Data> built = Data::CreateArray(_values.begin() + first, _values.GetCount() - first, _arena.arena);
    _values.Truncate(first);
    return built;
  }

  /// The elements of an array that are all numbers of one type, as in most arrays of most texts.
  /// @return false for other arrays, empty ones among them.
  template <typename Parsed, typename Number>
  static Result<bool> TakeNumbers(const dom::array& array, dom::element_type type, BaseArray<Number>& numbers) noexcept
  {
    numbers.Truncate(0);
    for (const dom::element element : array)
    {
      if (element.type() != type)
        return false;
      RETURN_IF_ERROR(numbers.Append(Parsed(element)));
    }
    return numbers.IsPopulated();
  }

  Result<Data> BuildObject(const dom::object& object, size_t depth) noexcept
  {
    if (depth > kDeepestJson)
      return MakeParseError(simdjson::DEPTH_ERROR);
    const Int first = _members.GetCount();
    for (const dom::key_value_pair field : object)
    {
      ASSIGN_OR_RETURN(const DataKey key, BuildKey(field.key));
      ASSIGN_OR_RETURN(Data data, BuildValue(field.value, depth));
      RETURN_IF_ERROR(_members.Append(DataMember{key, std::move(data)}));
    }
    Result<DataDictionary> built = DataDictionary::Create(_members.begin() + first, _members.GetCount() - first, _arena.arena);
    _members.Truncate(first);
    if (built.HasError())
      return built.GetError();
    return Data(std::move(built).GetValue());
  }

  /// The same name gives the same bytes, while the small cache holds it.
  Result<DataKey> BuildKey(std::string_view parsed) noexcept
  {
    const std::string_view original = FindOriginal(parsed);
    const std::string_view name = original.empty() ? parsed : original;
    const UInt hash = String::HashBytes(name.data(), static_cast<Int>(name.size()));
    String& cached = _names[hash % _names.size()];
    if (cached.IsEmpty() || cached.GetView() != name)
    {
      ASSIGN_OR_RETURN(cached, BuildText(parsed, original));
    }
    return DataKey(cached, hash);
  }

  Result<Data> BuildString(std::string_view parsed) noexcept
  {
    ASSIGN_OR_RETURN(String text, BuildText(parsed, FindOriginal(parsed)));
    return Data(std::move(text));
  }

  Result<String> BuildText(std::string_view parsed, std::string_view original) noexcept
  {
    if (original.empty())
      return _pool.Add(parsed);
    return String(_block, original.data(), static_cast<Int>(original.size()));
  }

  std::string_view FindOriginal(std::string_view parsed) noexcept
  {
    return _payloads ? _payloads->FindOriginal(parsed) : std::string_view();
  }

  StringBlock* _block;
  JsonPayloads* _payloads;
  ArenaOwner _arena;
  TextPool _pool;
  std::array<String, 256> _names;
  BaseArray<Float> _floats;        // of one array
  BaseArray<Int> _ints;            // the same
  BaseArray<Data> _values;         // of the arrays that are open
  BaseArray<DataMember> _members;  // of the objects that are open
};

/// The end of the string that begins with the quote at `at`.
size_t SkipString(std::string_view text, size_t at) noexcept
{
  for (++at; at < text.size() && text[at] != '"'; ++at)
    at += text[at] == '\\' ? 1 : 0;
  return at + 1;
}

/// text with an exponent behind each whole number that may be beyond 64 bits, so that it reads as a float. Such numbers are so
/// rare that all of this runs only after the parser has met one that it refuses.
std::string WidenIntegers(std::string_view text)
{
  constexpr std::string_view kOfNumbers = "+-.0123456789Ee";
  std::string widened;
  size_t kept = 0;
  for (size_t at = 0; at < text.size();)
  {
    if (text[at] == '"')
    {
      at = SkipString(text, at);
      continue;
    }
    const size_t end = std::min(text.find_first_not_of(kOfNumbers, at), text.size());
    const std::string_view number = text.substr(at, end - at);
    const std::string_view digits = number.starts_with('-') ? number.substr(1) : number;
    if (digits.size() >= kLongIntegerDigits && digits.find_first_not_of("0123456789") == std::string_view::npos)
    {
      widened.append(text.substr(kept, end - kept)).append("e0");
      kept = end;
    }
    at = std::max(end, at + 1);
  }
  if (kept > 0)
    widened.append(text.substr(kept));
  return widened;
}

/// text has kJsonPadding readable bytes behind it.
Result<Data> ParseText(std::string_view text, StringBlock* block, JsonPayloads* payloads)
{
  dom::parser parser;
  // The parser does not count an innermost container that is empty, so one level more is let through here and counted later.
  if (const simdjson::error_code error = parser.allocate(std::max<size_t>(text.size(), 64), kDeepestJson + 1))
    return MakeParseError(error);
  dom::element root;
  simdjson::error_code error = parser.parse(text.data(), text.size(), false).get(root);
  std::string widened;
  if (error == simdjson::NUMBER_ERROR)
    widened = WidenIntegers(text);
  if (!widened.empty())
    error = parser.parse(widened).get(root);
  return error ? MakeParseError(error) : DocumentBuilder(block, payloads).Build(root);
}

/// What stands in front of and behind the buffers is passed over.
simdjson::error_code FindBufferLength(simdjson::ondemand::document& text, Int& length)
{
  length = -1;
  simdjson::ondemand::object root;
  simdjson::ondemand::array buffers;
  if (const simdjson::error_code error = text.get_object().get(root))
    return error;
  const simdjson::error_code found = root.find_field_unordered("buffers").get_array().get(buffers);
  if (found == simdjson::NO_SUCH_FIELD)
    length = 0;
  if (found)
    return found == simdjson::NO_SUCH_FIELD ? simdjson::SUCCESS : found;
  Int count = 0;
  for (auto buffer : buffers)
  {
    if (const simdjson::error_code error = buffer["byteLength"].get_int64().get(length))
      return error;
    ++count;
  }
  length = count == 1 ? length : -1;
  return simdjson::SUCCESS;
}

}  // namespace

Result<Int> ReadBufferLength(const Char* text, Int byteCount) noexcept
{
  const size_t length = static_cast<size_t>(byteCount);
  simdjson::ondemand::parser parser;
  simdjson::ondemand::document document;
  Int found = -1;
  simdjson::error_code error = parser.iterate(text, length, length + static_cast<size_t>(kJsonPadding)).get(document);
  if (!error)
    error = FindBufferLength(document, found);
  return error ? Result<Int>(MakeParseError(error)) : Result<Int>(found);
}

Result<Data> ParseJson(StringBlock* block, const Char* text, Int byteCount) noexcept
{
  try
  {
    const std::string_view whole(text, static_cast<size_t>(byteCount));
    if (whole.starts_with("\xEF\xBB\xBF"))
      return MakeParseError("it begins with a byte order mark");
    JsonPayloads payloads(whole);
    if (payloads.GetByteCount() <= whole.size() / kPayloadShare)
      return ParseText(whole, block, nullptr);
    std::string shortened = payloads.MakeShortenedText(static_cast<size_t>(kJsonPadding));
    const size_t length = shortened.size();
    shortened.append(static_cast<size_t>(kJsonPadding), '\0');
    Result<Data> parsed = ParseText(std::string_view(shortened).substr(0, length), block, &payloads);
    if (parsed.HasError() || payloads.WereFoundOnce())
      return parsed;
    return ParseText(whole, block, nullptr);
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
