#pragma once

// A generated file taken apart again, by other means than it was made: containers byte by byte, JSON by a parser of its own. What
// does not add up is a std::runtime_error that says so.

#include "framework/types.h"

#include <simdjson.h>
#include <string>
#include <string_view>
#include <vector>

namespace q7z::generate
{

class GeneratedFile
{
public:
  /// Reads either form. Lengths of the container, of the buffer, of views and of accessors must add up.
  explicit GeneratedFile(const std::string& bytes);

  simdjson::dom::element GetRoot() const { return _root; }
  const std::string& GetBuffer() const { return _buffer; }
  Int GetCount(std::string_view array) const;

  /// The values of an accessor of 32-bit floats, of 16-bit or of 32-bit whole numbers, component by component.
  std::vector<Float> GetValues(Int accessor) const;

private:
  void ReadGlb(std::string_view bytes);
  void Parse(std::string_view json);
  void CheckViews() const;
  void CheckAccessors() const;

  simdjson::dom::parser _parser;
  simdjson::dom::element _root;
  std::string _buffer;
};

}  // namespace q7z::generate
