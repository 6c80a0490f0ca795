#include "host/scene/materialrecord.h"

namespace q7z
{

namespace
{

Result<Data> CopyArray(const DataArrayView& elements) noexcept
{
  BaseArray<Data> copies;
  RETURN_IF_ERROR(copies.Reserve(elements.GetCount()));
  for (const Data& element : elements)
  {
    ASSIGN_OR_RETURN(Data copy, CopyData(element));
    RETURN_IF_ERROR(copies.Append(std::move(copy)));
  }
  return Data::CreateArray(std::move(copies));
}

Result<Data> CopyDictionary(const DataDictionary& dictionary) noexcept
{
  DataDictionary copies;
  for (const DataMember& member : dictionary)
  {
    ASSIGN_OR_RETURN(String name, member.key.GetName().Copy());
    ASSIGN_OR_RETURN(Data value, CopyData(member.value));
    RETURN_IF_ERROR(copies.Set(DataKey(name, member.key.GetHash()), std::move(value)));
  }
  return Data(std::move(copies));
}

/// A local path gets a text of its own; other Urls are only ever made from texts of their own.
Result<Url> CopyUrl(const Url& url) noexcept
{
  if (url.GetScheme() != URLSCHEME_FILESYSTEM)
    return url;
  ASSIGN_OR_RETURN(const String path, url.GetPath().Copy());
  return Url::FromPath(path);
}

}  // namespace

Result<Data> CopyData(const Data& value) noexcept
{
  switch (value.GetKind())
  {
    case DataKind::kString:
    {
      ASSIGN_OR_RETURN(const String text, value.GetString());
      ASSIGN_OR_RETURN(String copy, text.Copy());
      return Data(std::move(copy));
    }
    case DataKind::kArray:
    {
      ASSIGN_OR_RETURN(const DataArrayView elements, value.GetArray());
      return CopyArray(elements);
    }
    case DataKind::kDictionary:
    {
      ASSIGN_OR_RETURN(const DataDictionary dictionary, value.GetDictionary());
      return CopyDictionary(dictionary);
    }
    default: return value;
  }
}

Result<void> CopyExchangeData(const HostMaterialExchangeData& source, HostMaterialExchangeData& target) noexcept
{
  target.parameters.Reset();
  target.textures.Reset();
  ASSIGN_OR_RETURN(target.materialTypeId, source.materialTypeId.Copy());
  for (const auto& entry : source.parameters)
  {
    ASSIGN_OR_RETURN(String key, entry.GetKey().Copy());
    ASSIGN_OR_RETURN(Data value, CopyData(entry.GetValue().value));
    RETURN_IF_ERROR(target.parameters.Set(std::move(key), {std::move(value), entry.GetValue().constant}));
  }
  for (const auto& entry : source.textures)
  {
    ASSIGN_OR_RETURN(String key, entry.GetKey().Copy());
    ASSIGN_OR_RETURN(Url url, CopyUrl(entry.GetValue().url));
    RETURN_IF_ERROR(target.textures.Set(std::move(key), {std::move(url), nullptr}));
  }
  return {};
}

}  // namespace q7z
