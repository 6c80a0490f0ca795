#include "plugin/document/gltfutilities.h"

#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

Error MakeMissingMemberError(const DataKey& key) noexcept
{
  const Result<String> message = String::Format("The required member @ is missing."_s, {key.GetName()});
  return message.HasError() ? message.GetError() : MAKE_ERROR(ErrorClass::kIllegalState, message.GetValue());
}

Result<Data> ReadRequired(const DataDictionary& dict, const DataKey& key) noexcept
{
  const Data* const value = dict.Find(key);
  if (!value)
    return MakeMissingMemberError(key);
  return *value;
}

/// A conversion's value, or the default when it failed.
template <typename T>
T ValueOr(Result<T> result, const T& defaultValue) noexcept
{
  return result.HasError() ? defaultValue : std::move(result).GetValue();
}

/// The elements of an array member into out, by a conversion of Data.
template <typename T, typename Convert>
Result<Bool> ReadArray(const DataDictionary& dict, const DataKey& key, BaseArray<T>& out, Convert convert) noexcept
{
  out.Truncate(0);
  const Data* const value = dict.Find(key);
  if (!value)
    return false;
  ASSIGN_OR_RETURN(const DataArrayView elements, value->GetArray());
  RETURN_IF_ERROR(out.Reserve(elements.GetCount()));
  for (const Data& element : elements)
  {
    ASSIGN_OR_RETURN(T converted, convert(element));
    RETURN_IF_ERROR(out.Append(std::move(converted)));
  }
  return true;
}

}  // namespace

Result<Int> ReadRequiredInt(const DataDictionary& dict, const DataKey& key) noexcept
{
  ASSIGN_OR_RETURN(const Data value, ReadRequired(dict, key));
  return value.GetInt();
}

Result<String> ReadRequiredString(const DataDictionary& dict, const DataKey& key) noexcept
{
  ASSIGN_OR_RETURN(const Data value, ReadRequired(dict, key));
  return value.GetString();
}

Result<DataDictionary> ReadDictionary(const DataDictionary& dict, const DataKey& key) noexcept
{
  ASSIGN_OR_RETURN(const Data value, ReadRequired(dict, key));
  return value.GetDictionary();
}

Int ReadInt(const DataDictionary& dict, const DataKey& key, Int defaultValue) noexcept
{
  const Data* const value = dict.Find(key);
  return value ? ValueOr(value->GetInt(), defaultValue) : defaultValue;
}

Float ReadFloat(const DataDictionary& dict, const DataKey& key, Float defaultValue) noexcept
{
  const Data* const value = dict.Find(key);
  return value ? ValueOr(value->GetFloat(), defaultValue) : defaultValue;
}

String ReadString(const DataDictionary& dict, const DataKey& key, const String& defaultValue) noexcept
{
  const Data* const value = dict.Find(key);
  return value ? ValueOr(value->GetString(), defaultValue) : defaultValue;
}

Bool ReadBool(const DataDictionary& dict, const DataKey& key, Bool defaultValue) noexcept
{
  const Data* const value = dict.Find(key);
  return value ? ValueOr(value->GetBool(), defaultValue) : defaultValue;
}

Result<Bool> ReadDataArray(const DataDictionary& dict, const DataKey& key, BaseArray<Data>& out) noexcept
{
  return ReadArray(dict, key, out, [](const Data& element) noexcept -> Result<Data> { return element; });
}

Result<Bool> ReadIntArray(const DataDictionary& dict, const DataKey& key, BaseArray<Int>& out) noexcept
{
  return ReadArray(dict, key, out, [](const Data& element) noexcept { return element.GetInt(); });
}

Result<Bool> ReadFloatArray(const DataDictionary& dict, const DataKey& key, BaseArray<Float>& out) noexcept
{
  return ReadArray(dict, key, out, [](const Data& element) noexcept { return element.GetFloat(); });
}

Result<Bool> ReadStringArray(const DataDictionary& dict, const DataKey& key, BaseArray<String>& out) noexcept
{
  return ReadArray(dict, key, out, [](const Data& element) noexcept { return element.GetString(); });
}

Result<Bool> ForEachElement(const DataDictionary& dict, const DataKey& key, ElementCallback& callback) noexcept
{
  const Data* const value = dict.Find(key);
  if (!value)
    return false;
  ASSIGN_OR_RETURN(const DataArrayView elements, value->GetArray());
  for (Int idx = 0; idx < elements.GetCount(); ++idx)
  {
    ASSIGN_OR_RETURN(const DataDictionary dataValue, elements[idx].GetDictionary());
    CHECK_STATE(callback(dataValue, idx));
  }
  return true;
}

Result<DataDictionary> GetRootDictionary(const BaseArray<Data>& jsonArray) noexcept
{
  CHECK_STATE(jsonArray.IsPopulated());
  return jsonArray[0].GetDictionary();
}

Result<BaseArray<Data>> ParseJsonFile(const Url& url) noexcept
{
  HostJson* const json = FindService<HostJson>();
  if (!json)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no JSON parser."_s);
  Result<BaseArray<Data>> jsonArray = json->ParseFile(url);
  if (jsonArray.HasError())
    return Error::Make(ErrorClass::kUnexpected, "JSON file couldn't be read"_s, __FILE__, __LINE__, jsonArray.GetError());
  return jsonArray;
}

}  // namespace q7z
