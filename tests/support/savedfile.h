#pragma once

// A scene that is saved, as what stands in its file. Members are asked for by path, the data of accessors as plain numbers.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/data.h"
#include "plugin/document/gltfexportoptions.h"
#include "tests/support/testfolder.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

using Parameters = std::vector<std::pair<int, HostValue>>;

/// The text of a scene document with these members, such as "\"objects\": [...]".
std::string SceneText(std::string_view members);

/// Reads a scene document; throws with the reader's message when that fails.
HeadlessOwner<HeadlessDocument> ReadScene(std::string_view text);
/// Writes one.
std::string WriteScene(const HeadlessDocument& document);

/// A folder for what saves write, which goes with its owner.
class SaveFolder
{
public:
  /// The one file that is saved into it.
  std::string File() const { return _folder / "saved"; }
  SaveReport Save(TestHost& host, HeadlessDocument& document, const Parameters& parameters) const;

  /// Whether there is that file, and whether there is anything else, such as a temporary file.
  bool HasFile() const;
  bool HasAnythingElse() const;
  /// The file's bytes, empty without one. It is removed.
  std::string TakeBytes() const;

private:
  TestFolder _folder;
};

/// What stands in a file of either form.
class SavedContent
{
public:
  SavedContent() = default;
  explicit SavedContent(std::string bytes);

  const std::string& Bytes() const { return _bytes; }

  /// "nodes/0/name" is a member as compact JSON; "mesh 0 POSITION" an attribute's numbers, "mesh 0 indices" and "accessor 3" other
  /// accessors', each "a b c". "-" for what is not there.
  std::string At(const std::string& path) const;
  /// A text without its quotes, empty when it is not there.
  std::string TextAt(const std::string& path) const;
  Int IntAt(const std::string& path, Int missing) const;
  /// How many elements an array has.
  int Count(const std::string& path) const;
  /// The bytes of a buffer view.
  std::string View(Int view) const;

private:
  std::optional<Data> Find(std::string_view path) const;
  std::string Numbers(Int accessor) const;

  std::string _bytes;
  std::string _binary;  // of a GLB file
  Data _root;
};

/// The bytes behind the comma of a data URI.
std::string DecodeUri(std::string_view uri);

/// Saves a scene document with a host of its own. Without success there is no content.
class SavedFile : public SavedContent
{
public:
  SavedFile(std::string_view scene, const Parameters& parameters);

  const SaveReport& Report() const { return _report; }
  Bool HasFile() const { return _hasFile; }
  TestHost& Host() { return _host; }

private:
  TestHost _host;
  SaveReport _report;
  Bool _hasFile = false;
};

/// Whether two texts are equal where numbers count as equal that differ by no more than a millionth (of one, or of their size).
bool IsNear(std::string_view actual, std::string_view expected);

}  // namespace q7z::test
