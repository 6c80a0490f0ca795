// The extensions that a file lists: what it uses goes to the report and the user, what it requires ends the load.

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfparse.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

Result<Data> MakeReportEntry(HostHash& hash, const String& name, Bool required) noexcept
{
  ASSIGN_OR_RETURN(String id, hash.HashText(name));
  DataDictionary entry;
  RETURN_IF_ERROR(entry.Set(keys::kId, std::move(id)));
  RETURN_IF_ERROR(entry.Set(keys::kRequired, required));
  return Data(std::move(entry));
}

/// The list of objects that the load's report holds; names are shown as hashes alone.
Result<Data> MakeReportList(const HashMap<String, GltfExtensionEntry>& extensions) noexcept
{
  HostHash* const hash = FindService<HostHash>();
  if (!hash)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no text hash."_s);
  BaseArray<Data> list;
  RETURN_IF_ERROR(list.Reserve(extensions.GetCount()));
  for (const auto& extension : extensions)
  {
    ASSIGN_OR_RETURN(Data entry, MakeReportEntry(*hash, extension.GetKey(), extension.GetValue().required));
    RETURN_IF_ERROR(list.Append(std::move(entry)));
  }
  return Data::CreateArray(std::move(list));
}

/// The names, all or the required ones, with ", " between them.
Result<String> JoinNames(const HashMap<String, GltfExtensionEntry>& extensions, Bool requiredOnly) noexcept
{
  constexpr Int kSeparatorBytes = 2;
  BaseArray<Char> text;
  for (const auto& extension : extensions)
  {
    if (requiredOnly && !extension.GetValue().required)
      continue;
    RETURN_IF_ERROR(text.AppendCopies(extension.GetKey().GetBytes(), extension.GetKey().GetByteCount()));
    RETURN_IF_ERROR(text.AppendCopies(", ", kSeparatorBytes));
  }
  text.Truncate(text.GetCount() - kSeparatorBytes);
  return String::Create(std::string_view(text.begin(), static_cast<size_t>(text.GetCount())));
}

}  // namespace

Result<void> GltfParser::ReadExtensions(const DataDictionary& jsonGLTF) noexcept
{
  CHECK_STATE(_gltfData);
  CHECK_STATE(_sceneLoader);
  BaseArray<String> used;
  ASSIGN_OR_RETURN(const Bool found, ReadStringArray(jsonGLTF, keys::kExtensionsUsed, used));
  // Deliberate: a file that requires extensions without listing them as used passes.
  if (!found)
    return {};
  BaseArray<String> required;
  RETURN_IF_ERROR(ReadStringArray(jsonGLTF, keys::kExtensionsRequired, required));
  RETURN_IF_ERROR(CollectExtensions(used, required));
  if (_gltfData->extensions.IsEmpty())
    return {};
  ASSIGN_OR_RETURN(Data list, MakeReportList(_gltfData->extensions));
  RETURN_IF_ERROR(_sceneLoader->GetReport().Set(keys::kExtensions, std::move(list)));
  return ReportExtensions();
}

Result<void> GltfParser::CollectExtensions(const BaseArray<String>& used, const BaseArray<String>& required) noexcept
{
  HashSet<String> requiredNames;
  for (const String& name : required)
    RETURN_IF_ERROR(requiredNames.Set(name, {}));
  for (const String& name : used)
    RETURN_IF_ERROR(_gltfData->extensions.Set(name, {.required = requiredNames.Contains(name)}));
  return {};
}

/// Tells the user what is used, then what is required. No required extension is ever accepted, whatever its name.
Result<void> GltfParser::ReportExtensions() noexcept
{
  const ImportWarnings& warnings = _sceneLoader->GetWarnings();
  ASSIGN_OR_RETURN(const String all, JoinNames(_gltfData->extensions, false));
  if (all.IsPopulated())
    warnings.AddResource(HostMessageClass::kInformation, 10011, all);
  ASSIGN_OR_RETURN(const String required, JoinNames(_gltfData->extensions, true));
  if (required.IsEmpty())
    return {};
  warnings.AddResource(HostMessageClass::kWarning, 10012, required);
  ASSIGN_OR_RETURN(const String message, String::Format("The file requires extensions: @"_s, {required}));
  return MAKE_ERROR(ErrorClass::kUnexpected, message);
}

}  // namespace q7z
