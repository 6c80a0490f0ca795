#include "host/scenefile/jsontree.h"

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

#include "framework/check.h"
#include "framework/data.h"
#include "host/scenefile/numbertext.h"
#include "host/services/headlessjson.h"

namespace q7z
{

static_assert(kJsonPadding >= static_cast<Int>(simdjson::SIMDJSON_PADDING));

namespace
{

namespace ondemand = simdjson::ondemand;

constexpr size_t kDeepest = 1024;
constexpr Int kLargestSingleInt = Int(1) << 24;
constexpr std::string_view kTooDeep =
  "nested deeper than 1,024 levels; a hierarchy this deep cannot pass through a scene document, convert the file directly";

/// The bytes of a number, and whether they make it a float.
struct NumberToken
{
  std::string_view text;
  Bool isFloat = false;
};

/// @param token  a number with the white space behind it.
NumberToken ReadNumberToken(std::string_view token) noexcept
{
  NumberToken number;
  size_t length = 0;
  for (; length < token.size() && static_cast<Byte>(token[length]) > ' '; ++length)
    number.isFloat |= token[length] == '.' || token[length] == 'e' || token[length] == 'E';
  number.text = token.substr(0, length);
  return number;
}

/// Memory that goes with the tree. Throws when there is none.
template <typename T>
T* Allocate(DataArena& arena, size_t count)
{
  void* const memory = arena.Allocate(static_cast<Int>(count * sizeof(T)));
  if (!memory)
    throw std::bad_alloc();
  return static_cast<T*>(memory);
}

/// The value of {"float": "nan"} and its like. @return whether the object is one.
Bool ReadNonFinite(const JsonNode& object, Float& number) noexcept
{
  if (object.count != 1 || object.members[0].name != "float" || object.members[0].value.kind != JsonKind::kString)
    return false;
  const std::string_view text = object.members[0].value.GetText();
  constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
  if (text != "nan" && text != "inf" && text != "-inf")
    return false;
  number = text == "nan" ? std::numeric_limits<Float>::quiet_NaN() : text == "inf" ? kInfinity : -kInfinity;
  return true;
}

/// Builds the nodes of one text, value by value. Recursion goes as deep as the text may nest. Throws bad_alloc.
class TreeBuilder
{
public:
  explicit TreeBuilder(DataArena& arena) : _arena(arena) {}

  Result<void> BuildRoot(ondemand::document& document, JsonNode& root)
  {
    ondemand::json_type type{};
    if (const auto error = document.type().get(type))
      return Broken(error);
    if (type != ondemand::json_type::object)
      return MakeJsonError("", "an object expected");
    ondemand::value value;
    if (const auto error = document.get_value().get(value))
      return Broken(error);
    RETURN_IF_ERROR(BuildValue(value, root));
    // Once everything was read there is no location any more.
    const char* rest = nullptr;
    return document.current_location().get(rest) ? Result<void>() : MakeJsonError("", "text behind the end of the JSON value");
  }

  Error Broken(simdjson::error_code code) const
  {
    if (code == simdjson::MEMALLOC)
      return Error::OutOfMemory();
    if (code == simdjson::CAPACITY)
      return MakeJsonError("", "the text is larger than 4 GiB");
    return MakeJsonError(GetPath(), std::string("the JSON text is broken: ") + simdjson::error_message(code));
  }

private:
  /// What is being built: a member of an object, or an element.
  struct Step
  {
    std::string_view name;
    Int index = -1;
  };

  std::string GetPath() const
  {
    std::string path;
    for (const Step& step : _path)
    {
      if (step.index >= 0)
        path.append("[").append(std::to_string(step.index)).append("]");
      else
        path = JoinJsonPath(path, step.name);
    }
    return path;
  }
  Error Fail(std::string_view text) const { return MakeJsonError(GetPath(), text); }

  Result<void> BuildValue(ondemand::value& value, JsonNode& node)
  {
    ondemand::json_type type{};
    if (const auto error = value.type().get(type))
      return Broken(error);
    switch (type)
    {
      case ondemand::json_type::object: return BuildObject(value, node);
      case ondemand::json_type::array: return BuildArray(value, node);
      case ondemand::json_type::number: return BuildNumber(value, node);
      case ondemand::json_type::string: return BuildString(value, node);
      case ondemand::json_type::boolean: return BuildBool(value, node);
      case ondemand::json_type::null: return BuildNull(value, node);
    }
    return Broken(simdjson::TAPE_ERROR);
  }

  Result<void> BuildNull(ondemand::value& value, JsonNode& node)
  {
    bool isNull = false;
    const auto error = value.is_null().get(isNull);
    if (error || !isNull)
      return Broken(error ? error : simdjson::N_ATOM_ERROR);
    node.kind = JsonKind::kNull;
    return {};
  }

  Result<void> BuildBool(ondemand::value& value, JsonNode& node)
  {
    node.kind = JsonKind::kBool;
    if (const auto error = value.get_bool().get(node.boolean))
      return Broken(error);
    return {};
  }

  Result<void> BuildString(ondemand::value& value, JsonNode& node)
  {
    std::string_view text;
    if (const auto error = value.get_string().get(text))
      return Broken(error);
    node.kind = JsonKind::kString;
    node.text = text.data();
    node.count = static_cast<Int>(text.size());
    return {};
  }

  Result<void> BuildNumber(ondemand::value& value, JsonNode& node)
  {
    const NumberToken token = ReadNumberToken(value.raw_json_token());
    node.kind = token.isFloat ? JsonKind::kFloat : JsonKind::kInt;
    const auto error = token.isFloat ? value.get_double().get(node.number) : value.get_int64().get(node.whole);
    if (error && token.text.find_first_not_of("+-.eE0123456789") == std::string_view::npos)
      return Fail(std::string(token.text.substr(0, 40)) + " is no number that 64 bits hold");
    if (error)
      return Broken(error);
    if (token.isFloat)
      node.isSingle = _asksSingle && IsSingleText(token.text, node.number);
    else
      node.isSingle = node.whole >= -kLargestSingleInt && node.whole <= kLargestSingleInt;
    return {};
  }

  Result<void> BuildObject(ondemand::value& value, JsonNode& node)
  {
    ondemand::object object;
    if (const auto error = value.get_object().get(object))
      return Broken(error);
    const size_t first = _members.size();
    RETURN_IF_ERROR(Enter());
    for (auto result : object)
    {
      ondemand::field field;
      if (const auto error = std::move(result).get(field))
        return Broken(error);
      RETURN_IF_ERROR(BuildMember(field));
    }
    _path.pop_back();
    node.kind = JsonKind::kObject;
    node.count = static_cast<Int>(_members.size() - first);
    node.members = Keep(_members, first);
    Float number = 0;
    if (!ReadNonFinite(node, number))
      return CheckNames(node);
    node.kind = JsonKind::kFloat;
    node.isSingle = true;
    node.number = number;
    return {};
  }

  Result<void> BuildMember(ondemand::field& field)
  {
    JsonMember member;
    if (const auto error = field.unescaped_key().get(member.name))
      return Broken(error);
    _path.back() = {member.name, -1};
    _asksSingle = true;
    RETURN_IF_ERROR(BuildValue(field.value(), member.value));
    _members.push_back(member);
    return {};
  }

  Result<void> CheckNames(const JsonNode& object)
  {
    std::vector<std::string_view>& names = _names;
    names.clear();
    for (Int i = 0; i < object.count; ++i)
      names.push_back(object.members[i].name);
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    return twice == names.end() ? Result<void>() : MakeJsonError(JoinJsonPath(GetPath(), *twice), "given twice");
  }

  Result<void> BuildArray(ondemand::value& value, JsonNode& node)
  {
    ondemand::array array;
    if (const auto error = value.get_array().get(array))
      return Broken(error);
    RETURN_IF_ERROR(Enter());
    const size_t first = _nodes.size();
    Packer packer(_numbers);
    for (auto result : array)
    {
      ondemand::value element;
      if (const auto elementError = std::move(result).get(element))
        return Broken(elementError);
      ++_path.back().index;
      _asksSingle = packer.IsSingle();
      JsonNode built;
      RETURN_IF_ERROR(BuildValue(element, built));
      if (!packer.Add(built))
      {
        packer.Unpack(_nodes);
        _nodes.push_back(built);
      }
    }
    _path.pop_back();
    packer.IsUsed() ? FinishNumbers(packer, node) : FinishArray(first, node);
    return {};
  }

  void FinishArray(size_t first, JsonNode& node)
  {
    const size_t count = _nodes.size() - first;
    const JsonNode* const elements = _nodes.data() + first;
    if (count == 2 && elements[0].kind == JsonKind::kInt && elements[1].kind == JsonKind::kFloat)
    {
      node.kind = JsonKind::kPair;
      node.count = elements[0].whole;
      node.number = elements[1].number;
      node.isSingle = elements[0].isSingle && elements[1].isSingle;
      _nodes.resize(first);
      return;
    }
    node.kind = JsonKind::kArray;
    node.count = static_cast<Int>(count);
    node.elements = Keep(_nodes, first);
  }

  /// Numbers of one kind that an array begins with, packed at the end of numbers as long as nothing else comes. They are not
  /// counted first: that would read all that stands in an array once for every array around it.
  class Packer
  {
  public:
    explicit Packer(std::vector<Int>& numbers) : _numbers(numbers), _first(numbers.size()) {}

    Bool IsUsed() const noexcept { return _kind != JsonKind::kNull && !_isUnpacked; }
    Bool IsSingle() const noexcept { return _isSingle; }
    JsonKind GetKind() const noexcept { return _kind; }
    size_t GetFirst() const noexcept { return _first; }

    /// @return false when the element cannot be packed with the others.
    Bool Add(const JsonNode& element)
    {
      if (_isUnpacked || !element.IsNumber() || (IsUsed() && element.kind != _kind))
        return false;
      _numbers.push_back(element.kind == JsonKind::kInt ? element.whole : std::bit_cast<Int>(element.number));
      _kind = element.kind;
      _isSingle = _isSingle && element.isSingle;
      return true;
    }

    /// Gives up: moves what was packed to the end of nodes. Which of the numbers were single is not known any more, if not all.
    void Unpack(std::vector<JsonNode>& nodes)
    {
      if (_isUnpacked)
        return;
      _isUnpacked = true;
      for (size_t i = _first; i < _numbers.size(); ++i)
      {
        JsonNode node;
        node.kind = _kind;
        node.isSingle = _isSingle;
        if (_kind == JsonKind::kInt)
          node.whole = _numbers[i];
        else
          node.number = std::bit_cast<Float>(_numbers[i]);
        nodes.push_back(node);
      }
      _numbers.resize(_first);
    }

  private:
    std::vector<Int>& _numbers;
    size_t _first;
    JsonKind _kind = JsonKind::kNull;
    Bool _isSingle = true;
    Bool _isUnpacked = false;
  };

  void FinishNumbers(const Packer& packer, JsonNode& node)
  {
    const size_t count = _numbers.size() - packer.GetFirst();
    node.isSingle = packer.IsSingle();
    node.count = static_cast<Int>(count);
    if (packer.GetKind() == JsonKind::kInt)
    {
      node.kind = JsonKind::kInts;
      node.ints = Keep(_numbers, packer.GetFirst());
      return;
    }
    node.kind = JsonKind::kFloats;
    Float* const floats = Allocate<Float>(_arena, count);
    std::memcpy(floats, _numbers.data() + packer.GetFirst(), count * sizeof(Float));
    _numbers.resize(packer.GetFirst());
    node.floats = floats;
  }

  Result<void> Enter()
  {
    if (_path.size() >= kDeepest)
      return Fail(kTooDeep);
    _path.push_back({});
    return {};
  }

  /// Moves what stands in open from first on into the tree's memory.
  template <typename T>
  const T* Keep(std::vector<T>& open, size_t first)
  {
    const size_t count = open.size() - first;
    T* const kept = count > 0 ? Allocate<T>(_arena, count) : nullptr;
    std::uninitialized_copy(open.begin() + static_cast<std::ptrdiff_t>(first), open.end(), kept);
    open.resize(first);
    return kept;
  }

  DataArena& _arena;
  std::vector<Step> _path;
  std::vector<JsonMember> _members;  // of the objects that are open
  std::vector<JsonNode> _nodes;      // of the arrays that are open
  std::vector<Int> _numbers;         // the same, packed; of floats their bits
  std::vector<std::string_view> _names;
  Bool _asksSingle = true;  // whether anybody asks if the next number is single
};

}  // namespace

/// What the nodes of a tree lie in: arrays and members in the arena, texts in the parser's memory.
struct JsonTree::Memory
{
  ondemand::parser parser;
  DataArena* arena = DataArena::Create();

  Memory() = default;
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;
  ~Memory()
  {
    if (arena)
      arena->Release();
  }
};

JsonTree::JsonTree() : _memory(std::make_unique<Memory>())
{}

JsonTree::~JsonTree() = default;

namespace
{

/// Takes the memory for a text and begins with it.
simdjson::error_code Begin(ondemand::parser& parser, std::string_view text, ondemand::document& document) noexcept
{
  if (const auto error = parser.allocate(std::max<size_t>(text.size(), 64), parser.max_depth()))  // 64: never nothing
    return error;
  // The parser does not tell when the memory for strings was not to be had. It tries once more when it begins, and this makes the
  // second try fail with an error instead of leaving null there again.
  parser.set_max_capacity(0);
  const simdjson::padded_string_view padded(text, text.size() + static_cast<size_t>(kJsonPadding));
  const auto error = parser.iterate(padded).get(document);
  return error == simdjson::CAPACITY ? simdjson::MEMALLOC : error;
}

}  // namespace

Result<std::unique_ptr<JsonTree>> JsonTree::Parse(std::string_view text)
{
  if (text.starts_with("\xEF\xBB\xBF"))
    return MakeJsonError("", "the text begins with a byte order mark");
  std::unique_ptr<JsonTree> tree(new JsonTree);
  if (!tree->_memory->arena)
    return Error::OutOfMemory();
  TreeBuilder builder(*tree->_memory->arena);
  ondemand::document document;
  if (const auto error = Begin(tree->_memory->parser, text, document))
    return builder.Broken(error);
  RETURN_IF_ERROR(builder.BuildRoot(document, tree->_root));
  return tree;
}

// Nodes.

JsonNode JsonNode::GetElement(Int index) const noexcept
{
  JsonNode element;
  element.isSingle = isSingle;
  switch (kind)
  {
    case JsonKind::kArray: return elements[index];
    case JsonKind::kInts:
      element.kind = JsonKind::kInt;
      element.whole = ints[index];
      break;
    case JsonKind::kFloats:
      element.kind = JsonKind::kFloat;
      element.number = floats[index];
      break;
    case JsonKind::kPair:
      element.kind = index == 0 ? JsonKind::kInt : JsonKind::kFloat;
      element.number = number;
      if (index == 0)
        element.whole = count;
      break;
    default: break;
  }
  return element;
}

const JsonNode* JsonNode::Find(std::string_view name) const noexcept
{
  const JsonMember* const found =
    std::find_if(members, members + count, [=](const JsonMember& member) { return member.name == name; });
  return found != members + count ? &found->value : nullptr;
}

// Paths.

namespace
{

/// Puts the path from node to place behind path. Recursion goes as deep as the tree. @return whether place is in node.
Bool FindPath(const JsonNode& node, const JsonNode& place, std::string& path)
{
  if (&node == &place)
    return true;
  const size_t length = path.size();
  if (node.kind == JsonKind::kObject)
  {
    for (Int i = 0; i < node.count; ++i)
    {
      path += path.empty() ? "" : ".";
      path += node.members[i].name;
      if (FindPath(node.members[i].value, place, path))
        return true;
      path.resize(length);
    }
  }
  if (node.kind == JsonKind::kArray)
  {
    for (Int i = 0; i < node.count; ++i)
    {
      path += '[' + std::to_string(i) + ']';
      if (FindPath(node.elements[i], place, path))
        return true;
      path.resize(length);
    }
  }
  return false;
}

/// A path of many levels with its middle left out.
std::string Shorten(const std::string& path)
{
  constexpr size_t kLongest = 240;
  constexpr size_t kKept = 110;
  return path.size() <= kLongest ? path : path.substr(0, kKept) + " ... " + path.substr(path.size() - kKept);
}

}  // namespace

std::string JoinJsonPath(const std::string& path, std::string_view name)
{
  return path.empty() ? std::string(name) : path + '.' + std::string(name);
}

Error MakeJsonError(const std::string& path, std::string_view text)
{
  const std::string whole = (path.empty() ? std::string("the document") : Shorten(path)) + ": " + std::string(text);
  ASSIGN_OR_RETURN(const String message, String::Create(whole));
  return MAKE_ERROR(ErrorClass::kUnexpected, message);
}

std::string JsonTree::GetPath(const JsonNode& place) const
{
  std::string path;
  FindPath(_root, place, path);
  return path;
}

Error JsonTree::MakeError(const JsonNode& place, std::string_view text) const
{
  return MakeJsonError(GetPath(place), text);
}

Error JsonTree::MakeError(const JsonNode& array, Int index, std::string_view text) const
{
  return MakeJsonError(GetPath(array) + '[' + std::to_string(index) + ']', text);
}

Error JsonTree::MakeError(const JsonNode& object, std::string_view name, std::string_view text) const
{
  return MakeJsonError(JoinJsonPath(GetPath(object), name), text);
}

}  // namespace q7z
