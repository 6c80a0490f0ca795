#pragma once

// DeformTest: files with one mesh of triangles, whose attributes are given as numbers, and a look at what became of them.

#include <cstdio>

#include "host/scene/conversion.h"
#include "host/scene/headlessobject.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{

using Numbers = std::vector<float>;

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

  HeadlessObject* Find(const std::string& name) { return FindObject(Host().Scene(), name); }

  /// Whether a line of the diagnostic output has the text.
  bool WasSaid(const std::string& text)
  {
    return std::ranges::any_of(Host().Diagnostics(),
                               [&](const std::string& line) { return line.find(text) != std::string::npos; });
  }

  static std::string Condition(const std::string& text) { return "Illegal state: Condition " + text + " not fulfilled."; }
};

}  // namespace q7z::test
