#pragma once

// CurrentStateTest: copies of the current state, and what they look like in one line.

#include "host/modeling/currentstate.h"
#include "tests/evaluation/evaluationfixture.h"

namespace q7z::test
{

class CurrentStateTest : public EvaluationTest
{
protected:
  using Owner = HeadlessOwner<HeadlessObject>;

  CurrentStateTest();

  /// With the hierarchy and tracks kept, unless a test changes _settings.
  Owner MakeCopy(const HeadlessObject& root, const UnfoldingLimits& limits = UnfoldingLimits());
  HeadlessObject& AddInstance(const char* name, HeadlessObject* parent, HeadlessObject* shown);
  /// Objects at top level as Describe writes them, and "name=shown" for an instance: "mesh* root(a(b=mesh c=) d:5103)".
  void Build(const std::string& outline);
  /// The first object of a name.
  HeadlessObject& Find(const std::string& name);
  /// A polygon object of one point.
  HeadlessObject& AddMeshObject(const char* name, HeadlessObject* parent = nullptr);

  /// "a(b* c(d))": names, a mesh with "*", an object that is neither mesh nor null with ":type".
  static std::string Describe(const HeadlessObject& root);

  HeadlessContainer _settings;
};

}  // namespace q7z::test
