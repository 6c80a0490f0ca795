#pragma once

// Tracks as text, for comparisons in tests, and a builder for files with animations.

#include <string>
#include <vector>

#include "plugin/module/hostdocument.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

/// One line for each track of a node, in the order of their ids: "pos.x L -33/1000=0 0=100 1=0". The letter is the interpolation of
/// all keys: S spline, L linear, H holding, or ? where they differ. Times are in seconds, as fractions; values have six digits, and
/// less than a millionth is 0. A key
/// with tangents has "<time,value" behind it for its left and ">time,value" for its right one, where they are not 0.
std::string WriteTracks(const HostNode* node);

/// The same for what a take overrides of a node.
std::string WriteTakeTracks(HostDocument* document, Int takeIndex, HostNode* node);

/// The first object with a name, or null.
HostObject* FindObject(HostDocument* document, const std::string& name);

struct ChannelText
{
  int node;
  const char* path;
  const char* interpolation;
  std::vector<float> times;
  std::vector<float> values;
};

/// A file with nodes and animations. Each channel has a sampler of its own, whose times have their bounds.
class AnimationFile
{
public:
  AnimationFile& Node(const std::string& members)
  {
    _file.Add("nodes", "{" + members + "}");
    return *this;
  }
  AnimationFile& Animation(const std::string& name, const std::vector<ChannelText>& channels);
  /// One whose members are given as they stand.
  AnimationFile& RawAnimation(const std::string& members)
  {
    _file.Add("animations", "{" + members + "}");
    return *this;
  }
  GltfJson& File() { return _file; }
  std::string Text() const { return _file.Text(); }

private:
  GltfJson _file;
};

}  // namespace q7z::test
