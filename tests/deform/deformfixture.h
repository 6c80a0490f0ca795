#pragma once

// DeformTest: files with one mesh of triangles, whose attributes are given as numbers, and a look at what became of them.

#include <cstdio>

#include "host/scene/conversion.h"
#include "host/scene/headlessobject.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{

using Numbers = std::vector<float>;

/// Numbers as an accessor of a component type. @return its index as text.
inline std::string AddValues(GltfJson& file, const Numbers& numbers, int componentType, const std::string& type,
                             bool normalized = false)
{
  const std::string more = normalized ? R"("normalized":true)" : "";
  switch (componentType)
  {
    case 5120: return std::to_string(file.Values(std::vector<int8_t>(numbers.begin(), numbers.end()), 5120, type, more));
    case 5121: return std::to_string(file.Values(std::vector<uint8_t>(numbers.begin(), numbers.end()), 5121, type, more));
    case 5123: return std::to_string(file.Values(std::vector<uint16_t>(numbers.begin(), numbers.end()), 5123, type, more));
    default: return std::to_string(file.Values(numbers, 5126, type, more));
  }
}

inline std::string WriteNumber(double number)
{
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", number);
  return text;
}

class DeformTest : public ImportTest
{
protected:
  DeformTest() { Host().Set(1002, HostUnitScale{1.0, 3}); }  // lengths stay

  /// The object of a name, or null.
  HeadlessObject* Find(const std::string& name)
  {
    for (HeadlessObject* op = Host().Scene().GetFirstObject(); op; op = HeadlessDocument::GetNextInDocument(op))
    {
      if (op->GetName().GetView() == name)
        return op;
    }
    return nullptr;
  }

  /// Whether a line of the diagnostic output has the text.
  bool WasSaid(const std::string& text)
  {
    return std::ranges::any_of(Host().Diagnostics(),
                               [&](const std::string& line) { return line.find(text) != std::string::npos; });
  }

  static std::string Condition(const std::string& text) { return "Illegal state: Condition " + text + " not fulfilled."; }
};

}  // namespace q7z::test
