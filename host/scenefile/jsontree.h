#pragma once

// JsonTree: a parsed JSON text for readers that are strict about it: every member of every object is looked at, in any order, and
// an error can name the path of the place it speaks of. Arrays of whole numbers and of floats are packed, so that the tree of a
// text that is mostly numbers is smaller than the text.

#include <memory>
#include <string>
#include <string_view>

#include "framework/result.h"

namespace q7z
{

enum class JsonKind : Byte
{
  kNull,
  kBool,
  kInt,
  kFloat,  ///< written with a point or an exponent, or {"float": "nan"} ("inf", "-inf")
  kString,
  kObject,
  kArray,   ///< of anything
  kInts,    ///< an array of whole numbers alone
  kFloats,  ///< an array of floats alone
  kPair,    ///< an array of a whole number and a float
};

struct JsonMember;

/// One value of a tree, owned by it. The pointers hold count elements.
struct JsonNode
{
  JsonKind kind = JsonKind::kNull;
  /// Of numbers and packed arrays: every number has a text that a 32-bit number is written with; see numbertext.h. Whole numbers
  /// count when 32-bit floats hold all numbers of that size.
  Bool isSingle = false;
  Int count = 0;  ///< elements, members, or bytes of a text; the whole number of a pair
  union
  {
    Bool boolean;
    Int whole;
    Float number = 0;  ///< also that of a pair
    const char* text;
    const JsonNode* elements;
    const JsonMember* members;
    const Int* ints;
    const Float* floats;
  };

  Bool IsArray() const noexcept { return kind >= JsonKind::kArray; }
  Bool IsNumber() const noexcept { return kind == JsonKind::kInt || kind == JsonKind::kFloat; }
  /// The value of a number.
  Float GetNumber() const noexcept { return kind == JsonKind::kInt ? static_cast<Float>(whole) : number; }
  /// The text of a string.
  std::string_view GetText() const noexcept { return {text, static_cast<size_t>(count)}; }
  /// The number of elements of an array.
  Int GetElementCount() const noexcept { return kind == JsonKind::kPair ? 2 : count; }
  /// An element of an array. Not a place of its own in the tree: a path to it is one to the array with an index.
  JsonNode GetElement(Int index) const noexcept;
  /// The member of an object, or null.
  const JsonNode* Find(std::string_view name) const noexcept;
};

struct JsonMember
{
  std::string_view name;
  JsonNode value;
};

class JsonTree
{
public:
  /// Parses the one value of a text, behind which kJsonPadding bytes can be read. The text must outlive the tree.
  /// @return an error of the class unexpected that begins with the path of what is wrong: broken JSON, a member that is given
  ///   twice, a number that 64 bits do not hold, more than 1,024 levels; or out of memory.
  static Result<std::unique_ptr<JsonTree>> Parse(std::string_view text);
  ~JsonTree();
  JsonTree(const JsonTree&) = delete;
  JsonTree& operator=(const JsonTree&) = delete;

  const JsonNode& GetRoot() const noexcept { return _root; }

  /// An error of the class unexpected about a node of the tree, or about one of its elements: "path: text".
  Error MakeError(const JsonNode& place, std::string_view text) const;
  Error MakeError(const JsonNode& array, Int index, std::string_view text) const;
  /// About a member that an object has not.
  Error MakeError(const JsonNode& object, std::string_view name, std::string_view text) const;

private:
  struct Memory;
  JsonTree();
  std::string GetPath(const JsonNode& place) const;

  std::unique_ptr<Memory> _memory;
  JsonNode _root;
};

/// The path of the member of a path: "objects[0].name", or the bare name at the top.
std::string JoinJsonPath(const std::string& path, std::string_view name);

/// "path: text", with the middle of a long path left out; for an empty path the text speaks of the whole.
Error MakeJsonError(const std::string& path, std::string_view text);

}  // namespace q7z
