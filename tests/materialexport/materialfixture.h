#pragma once

// MaterialExportTest: scenes of triangles, each with a material, are saved with the bitmaps and services of imaging.h, and members
// of the file are asked for by path.

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/materialexport/imaging.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{

class MaterialExportTest : public testing::Test
{
protected:
  MaterialExportTest();
  ~MaterialExportTest() override;

  /// Saves a scene of as many triangles as there are materials, "M0", "M1", ..., given by their members such as "\"channels\": {}".
  /// @return what failed, or nothing.
  std::string Save(const std::vector<std::string>& materials);
  /// Saves a document.
  std::string Save(HeadlessDocument& document);

  std::string At(const std::string& path) const { return _content.At(path); }
  /// "png 1x1 255,0,0": the bytes of an image in the file, wherever they are.
  std::string Image(int index) const;
  int Count(const std::string& path) const { return _content.Count(path); }

  TestHost _host;
  FaultyBitmaps _bitmaps{_host.Host().GetTables().bitmap};
  FakeSessions _sessions;
  FakeExchange _exchange;
  Parameters _parameters;  // of the saver
  Int32 _status = 0;

private:
  SaveFolder _folder;
  SavedContent _content;
};

/// A scene document of triangles with these materials.
std::string TrianglesWith(const std::vector<std::string>& materials);

/// A channel that is on: "\"0\": {"on": true}", with the shader of a file when one is given.
std::string Channel(int number, std::string_view file = "");

}  // namespace q7z::test
