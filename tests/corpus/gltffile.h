#pragma once

// A glTF file as tests read it, apart from what the product does: its JSON, and the numbers of its accessors.

#include <string>
#include <vector>

#include <simdjson.h>

namespace q7z::test
{

using Json = simdjson::dom::element;

/// A member, or none where one is missing on the way.
simdjson::simdjson_result<Json> GetMember(Json object, const char* name);
double GetNumber(Json object, const char* name, double missing);
int GetIndex(Json object, const char* name);  ///< -1 for none
std::string GetText(Json object, const char* name);
std::vector<double> GetNumbers(Json object, const char* name);
/// The elements of an array; none when it is missing.
std::vector<Json> GetElements(Json object, const char* name);

/// The whole of a file; throws when it cannot be read.
std::string ReadBytes(const std::string& path);

class GltfFile
{
public:
  /// Throws when the file or one of its buffers cannot be read.
  explicit GltfFile(const std::string& path);

  Json GetRoot() const { return _root; }
  /// All components in order, normalised; none may be sparse.
  std::vector<double> ReadAccessor(int index) const;

private:
  std::string ReadUri(const std::string& uri, const std::string& folder) const;
  std::vector<double> ReadComponents(Json view, size_t offset, int componentType, size_t width, size_t count) const;

  simdjson::dom::parser _parser;
  Json _root;
  std::vector<std::string> _buffers;
};

}  // namespace q7z::test
