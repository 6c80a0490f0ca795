#pragma once

// SceneTest: the scene's tables behind the wrappers of the interface, with a document. Each test ends with nothing left over and,
// unless it says otherwise, without a mistake counted.

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "host/scene/scenetables.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostpolygon.h"
#include "plugin/module/hosttrack.h"
#include "tests/framework/text.h"

namespace q7z::test
{

class SceneTest : public testing::Test
{
protected:
  SceneTest();
  ~SceneTest() override;

  HostDocument* Document() { return ToHost(_document.get()); }
  HeadlessDocument& Scene() { return *_document; }
  /// Frees the document before the test ends.
  void FreeDocument() { _document.reset(); }

  /// A new object of the caller's, with a name.
  static HostObject* Make(const char* name, Int32 type = kNullObjectType);
  /// The same, last at top level or last under parent.
  HostObject* Add(const char* name, HostObject* parent = nullptr, Int32 type = kNullObjectType);
  /// A polygon object at top level with these points and one polygon for each four indices.
  HostPolygonObject* AddMesh(std::initializer_list<Vector> points, std::initializer_list<HostPolygon> polygons);

  /// The names of an object's children, or of the top level: "a b(c d) e".
  std::string Tree();

  HostTables _tables;
  HeadlessSceneState _state;
  /// Mistakes that the test makes on purpose.
  Int _insertedTwice = 0;
  Int _freedWhileInserted = 0;
  Int _refusedCycles = 0;

private:
  /// Nodes and tracks alive, and the mistakes so far: inserted twice, freed while inserted, refused cycles.
  using Counts = std::array<Int, 5>;
  static Counts Count();

  const Counts _before;
  HeadlessOwner<HeadlessDocument> _document;
};

}  // namespace q7z::test
