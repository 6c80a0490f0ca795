#pragma once

// The thin layer through which every record takes values out of parsed JSON. A missing member gives the default or, for the
// array readers, false; a member of the wrong kind gives the default or an error, as each operation says.

#include <type_traits>

#include "framework/basearray.h"
#include "framework/check.h"
#include "framework/data.h"
#include "framework/url.h"

namespace q7z
{

// An error when the member is missing or does not convert.
Result<Int> ReadRequiredInt(const DataDictionary& dict, const DataKey& key) noexcept;
Result<String> ReadRequiredString(const DataDictionary& dict, const DataKey& key) noexcept;
Result<DataDictionary> ReadDictionary(const DataDictionary& dict, const DataKey& key) noexcept;

// The default when the member is missing or does not convert.
Int ReadInt(const DataDictionary& dict, const DataKey& key, Int defaultValue) noexcept;
Float ReadFloat(const DataDictionary& dict, const DataKey& key, Float defaultValue) noexcept;
String ReadString(const DataDictionary& dict, const DataKey& key, const String& defaultValue) noexcept;
Bool ReadBool(const DataDictionary& dict, const DataKey& key, Bool defaultValue) noexcept;

// @return whether the member is there; an error when it is no array or an element does not convert. out is replaced.
Result<Bool> ReadDataArray(const DataDictionary& dict, const DataKey& key, BaseArray<Data>& out) noexcept;
Result<Bool> ReadIntArray(const DataDictionary& dict, const DataKey& key, BaseArray<Int>& out) noexcept;
Result<Bool> ReadFloatArray(const DataDictionary& dict, const DataKey& key, BaseArray<Float>& out) noexcept;
Result<Bool> ReadStringArray(const DataDictionary& dict, const DataKey& key, BaseArray<String>& out) noexcept;

/// What is called for each element of an array member, converted to a dictionary.
class ElementCallback
{
public:
  /// @return false to stop the walk with an error.
  virtual Bool operator()(const DataDictionary& dataValue, Int idx) noexcept = 0;

protected:
  ~ElementCallback() = default;
};

/// Walks an array member from its first element. An element that is no object, or a callback that answers false, ends the walk
/// with an error.
/// @return whether the member is there.
Result<Bool> ForEachElement(const DataDictionary& dict, const DataKey& key, ElementCallback& callback) noexcept;

/// The same with a function object: Bool callback(const DataDictionary& dataValue, Int idx).
template <typename Callback>
  requires(!std::is_base_of_v<ElementCallback, Callback>)
Result<Bool> ForEachElement(const DataDictionary& dict, const DataKey& key, Callback callback) noexcept
{
  class Adapter final : public ElementCallback
  {
  public:
    explicit Adapter(Callback& function) noexcept : _function(function) {}
    Bool operator()(const DataDictionary& dataValue, Int idx) noexcept override { return _function(dataValue, idx); }

  private:
    Callback& _function;
  };
  Adapter adapter(callback);
  return ForEachElement(dict, key, static_cast<ElementCallback&>(adapter));
}

/// The members of the first of the top-level values that a parser hands over.
Result<DataDictionary> GetRootDictionary(const BaseArray<Data>& jsonArray) noexcept;

/// The top-level values of a JSON file. Whatever the parser has to say, its error is "JSON file couldn't be read", with the
/// parser's own as the cause.
Result<BaseArray<Data>> ParseJsonFile(const Url& url) noexcept;

}  // namespace q7z
