#pragma once

// The module's texts and parameter descriptions, from files that lie beside its library. Each object belongs to one HeadlessHost.

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin/module/hostconsole.h"
#include "plugin/module/hostregistration.h"

namespace q7z
{

enum class ParameterKind
{
  kSwitch,
  kChoice,
  kInteger,
  kLength,
  kAngle,
};

/// One parameter as a dialog would show it.
struct ParameterDescription
{
  Int32 id = 0;
  ParameterKind kind = ParameterKind::kSwitch;
  std::string group;
  std::string label;
  std::string defaultText;                             ///< of a choice: the number of one of the choices
  std::string range;                                   ///< "FROM to TO"; empty for any value
  std::vector<std::pair<Int32, std::string>> choices;  ///< number and label, of a choice alone
};

/// Reads the text of a description. Its form is told at the head of each of the files.
/// @return an empty text, or what is broken, with the line's number; parameters is then of no use.
std::string ParseDescription(std::string_view text, std::vector<ParameterDescription>& parameters);

/// Reads the text of a file of texts, "NUMBER = TEXT" a line, with comments from "#" at the start of a line on. All the numbers
/// that the module uses must be there, once each. @return as above.
std::string ParseTexts(std::string_view text, std::map<Int32, std::string>& texts);

class HeadlessDescriptions final : public HostDescriptionTable
{
public:
  /// Descriptions are read from folder/NAME.txt.
  void SetFolder(std::string folder) { _folder = std::move(folder); }
  /// Reads one, if that has not been done. @return false when it is missing or broken; GetFailure tells.
  bool Read(const std::string& name);
  /// Makes a description known under a plug-in's id. @return false when it is missing or broken.
  bool Register(Int32 id, const std::string& name);
  /// The parameters of a registered description, in the order of the file; null for an unknown id.
  const std::vector<ParameterDescription>* FindParameters(Int32 id) const;
  const std::string& GetFailure() const noexcept { return _failure; }

  Bool LoadByName(HostDescription* description, const Char* name) noexcept override;
  Bool LoadById(HostDescription* description, Int32 id) noexcept override;
  Bool BaseGetDescription(HostNode*, HostDescription*, Int32&) noexcept override { return true; }
  Bool BaseGetEnabling(const HostNode*, const HostDescId&) noexcept override { return true; }

private:
  std::string _folder;
  std::map<std::string, std::vector<ParameterDescription>> _descriptions;  // that were read, by name
  std::map<Int32, std::string> _names;                                     // of the registered ones, by plug-in
  std::string _failure;
};

class HeadlessResources final : public HostResourceTable
{
public:
  /// @param descriptions  read together with the texts; not owned.
  explicit HeadlessResources(HeadlessDescriptions& descriptions) noexcept : _descriptions(descriptions) {}
  /// Texts are read from folder/strings_en.txt when the module asks for them.
  void SetFolder(std::string folder) { _folder = std::move(folder); }
  /// Why loading failed.
  const std::string& GetFailure() const noexcept { return _failure; }

  Bool Load() noexcept override;
  String GetString(Int32 number) noexcept override;

private:
  bool ReadTexts();

  HeadlessDescriptions& _descriptions;
  std::string _folder;
  std::map<Int32, String> _texts;
  std::string _failure;
};

}  // namespace q7z
