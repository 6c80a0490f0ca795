#pragma once

// A scene that was saved, as what stands in its file. Members are asked for by path, the data of accessors as plain numbers.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/data.h"
#include "plugin/document/gltfexportoptions.h"
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

class SavedFile
{
public:
  /// Saves a scene document into a folder of its own.
  SavedFile(std::string_view scene, const Parameters& parameters);
  ~SavedFile();
  SavedFile(const SavedFile&) = delete;
  SavedFile& operator=(const SavedFile&) = delete;

  const SaveReport& Report() const { return _report; }
  const std::string& Path() const { return _path; }
  /// The file's bytes; empty when there is none.
  const std::string& Bytes() const { return _bytes; }

  /// "nodes/0/name" is a member as compact JSON; "mesh 0 POSITION" an attribute's numbers, "mesh 0 indices" and "accessor 3" other
  /// accessors', each "a b c". "-" for what is not there.
  std::string At(const std::string& path) const;

  TestHost& Host() { return _host; }

private:
  const Data* Find(std::string_view path) const;
  std::string Numbers(Int accessor) const;
  std::string BufferBytes(Int buffer) const;
  Int GetInt(const std::string& path, Int missing) const;

  TestHost _host;
  SaveReport _report;
  std::string _folder;
  std::string _path;
  std::string _bytes;
  std::string _binary;  // of a GLB file
  Data _root;
};

/// Whether two texts are equal where numbers count as equal that differ by no more than a millionth (of one, or of their size).
bool IsNear(std::string_view actual, std::string_view expected);

}  // namespace q7z::test
