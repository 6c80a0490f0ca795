// Animations as they are read and resolved: members, defaults, what is refused, and which references are missing.

#include <sstream>

#include <gtest/gtest.h>

#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

/// 'name' channel>sampler:node:path ... sampler=input>output:interpolation*valuesPerKey ...
std::string Write(const GltfAnimation& animation)
{
  std::ostringstream out;
  out << "'" << Text(animation.name) << "'";
  for (const GltfChannel& channel : animation.channels)
    out << " >" << channel.samplerIndex << ":" << channel.node << ":" << Text(channel.path);
  for (const auto& entry : animation.samplers)
  {
    const GltfAnimationSampler& sampler = entry.GetValue();
    out << " " << entry.GetKey() << "=" << sampler.input << ">" << sampler.output << ":" << Text(sampler.interpolation) << "*"
        << sampler.valuesPerKey;
  }
  return out.str();
}

struct RecordRow
{
  const char* name;
  const char* json;
  const char* expected;  // the record; empty for one that is refused
};

const RecordRow kRecordRows[] = {
  {"EverythingSet",
   R"({"name":"Walk","channels":[{"sampler":1,"target":{"node":3,"path":"rotation"}},{"sampler":0,"target":{"node":3,"path":"scale"}}],
       "samplers":[{"input":5,"output":6},{"input":5,"output":7,"interpolation":"CUBICSPLINE"}]})",
   "'Walk' >1:3:rotation >0:3:scale 0=5>6:LINEAR*1 1=5>7:CUBICSPLINE*3"},
  {"NoNode", R"({"channels":[{"sampler":0,"target":{"path":"pointer"}}]})", "'' >0:-1:pointer"},
  {"NamesAreExact",
   R"({"samplers":[{"input":0,"output":1,"interpolation":"cubicspline"},{"input":0,"output":1,"interpolation":""},
                        {"input":0,"output":1,"interpolation":5},{"input":0,"output":1,"interpolation":"STEP"}]})",
   "'' 0=0>1:cubicspline*1 1=0>1:*1 2=0>1:LINEAR*1 3=0>1:STEP*1"},
  {"ChannelWithoutSampler", R"({"channels":[{"target":{"path":"scale"}}]})", ""},
  {"TargetWithoutPath", R"({"channels":[{"sampler":0,"target":{"node":0}}]})", ""},
  {"SamplerWithoutInput", R"({"samplers":[{"output":1}]})", ""},
  {"ChannelsOfTheWrongKind", R"({"channels":{}})", ""},
  {"ChannelOfTheWrongKind", R"({"channels":[3]})", ""},
};

class AnimationRecord : public testing::TestWithParam<RecordRow>
{};

TEST_P(AnimationRecord, IsReadOrLeftOut)
{
  // The animation behind keeps its place.
  const GltfData data = ReadRecords(R"({"animations":[)" + std::string(GetParam().json) + R"(,{"name":"next"}]})");
  const GltfAnimation* const animation = data.animations.Find(0);
  EXPECT_EQ(animation ? Write(*animation) : "", GetParam().expected);
  ASSERT_TRUE(data.animations.Find(1));
  EXPECT_EQ(Write(*data.animations.Find(1)), "'next'");
}

INSTANTIATE_TEST_SUITE_P(Rows, AnimationRecord, testing::ValuesIn(kRecordRows), RowName());

constexpr const char* kNoAccessor = "Illegal state: Condition accessor not fulfilled. ";
constexpr const char* kNoSampler = "Illegal state: Condition sampler not fulfilled. ";

struct ResolveRow
{
  const char* name;
  const char* animation;
  const char* message;
  const char* links;  // for each channel whether it has its sampler
};

const ResolveRow kResolveRows[] = {
  {"BothChannelsLinked",
   R"("channels":[{"sampler":1,"target":{"path":"scale"}},{"sampler":0,"target":{"path":"scale"}}],
      "samplers":[{"input":0,"output":1},{"input":1,"output":0}])",
   "", "++"},
  {"MissingOutput", R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":9}])", kNoAccessor,
   "-"},
  {"OneBadSamplerUnlinksAll",
   R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":1},{"input":0,"output":9}])",
   kNoAccessor, "-"},
  {"MissingSamplerEndsTheLinking",
   R"("channels":[{"sampler":0,"target":{"path":"scale"}},{"sampler":5,"target":{"path":"scale"}},
                  {"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":1}])",
   kNoSampler, "+--"},
};

class AnimationReferences : public testing::TestWithParam<ResolveRow>
{};

TEST_P(AnimationReferences, AreFoundOrTellWhatIsMissing)
{
  GltfData data = ReadRecords(R"({"buffers":[{"byteLength":8}],"bufferViews":[{"buffer":0,"byteLength":8}],
    "accessors":[{"bufferView":0,"componentType":5126,"count":2,"type":"SCALAR"},
                 {"bufferView":0,"componentType":5126,"count":2,"type":"SCALAR"},
                 {"bufferView":9,"componentType":5126,"count":2,"type":"SCALAR"}],
    "animations":[{)" + std::string(GetParam().animation) +
                                "}]}",
                              Bytes(8));
  GltfAnimation& animation = *data.animations.Find(0);
  EXPECT_EQ(ErrorText(animation.ResolveAnimation(&data)), GetParam().message);
  std::string links;
  for (const GltfChannel& channel : animation.channels)
    links += channel.sampler ? "+" : "-";
  EXPECT_EQ(links, GetParam().links);
}

INSTANTIATE_TEST_SUITE_P(Rows, AnimationReferences, testing::ValuesIn(kResolveRows), RowName());

}  // namespace
}  // namespace q7z::test
