// Samplers: what refers to them, their range in time, and their value at any time.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/animation/gltfsampler.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// A sampler over floats, in the document that it needs.
class SamplerFile
{
public:
  SamplerFile(const std::vector<float>& times, const std::vector<float>& values, const std::string& interpolation,
              const std::string& type = "SCALAR")
  {
    GltfJson file;
    file.Floats(times, "SCALAR");
    file.Floats(values, type);
    file.Add("animations", R"({"samplers":[{"input":0,"output":1,"interpolation":")" + interpolation + R"("}]})");
    _data = ReadRecords(file.Text(), file.Buffer());
    EXPECT_EQ(ErrorText(_data.animations.Find(0)->ResolveAnimation(&_data)), "");
  }

  const GltfAnimationSampler& Sampler() const { return *_data.animations.Find(0)->samplers.Find(0); }

  std::vector<double> Scalars(const std::vector<double>& times) const
  {
    BaseArray<Float> values;
    message = ErrorText(ResampleScalar(Sampler(), MakeTimes(times), {}, values));
    return ToVector(values);
  }

  static BaseArray<Float> MakeTimes(const std::vector<double>& times)
  {
    BaseArray<Float> array;
    EXPECT_EQ(ErrorText(array.AppendCopies(times.data(), static_cast<Int>(times.size()))), "");
    return array;
  }

  mutable std::string message;  // of the last call

private:
  GltfData _data;
};

// Of animations as they are resolved: the samplers of channels, and the time ranges of samplers.

TEST(AnimationReferences, AreFoundOrTellWhatIsMissing)
{
  constexpr const char* kNoAccessor = "Illegal state: Condition accessor not fulfilled. ";
  const struct
  {
    const char* animation;
    const char* message;
    const char* links;  // for each channel whether it has its sampler
  } rows[] =
    {{R"("channels":[{"sampler":1,"target":{"path":"scale"}},{"sampler":0,"target":{"path":"scale"}}],
      "samplers":[{"input":0,"output":1},{"input":1,"output":0}])",
      "", "++"},
     {R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":9}])", kNoAccessor, "-"},
     // One that is broken unlinks all.
     {R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":1},{"input":0,"output":9}])",
      kNoAccessor, "-"},
     // One that is missing ends the linking.
     {R"("channels":[{"sampler":0,"target":{"path":"scale"}},{"sampler":5,"target":{"path":"scale"}},
                  {"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":0,"output":1}])",
      "Illegal state: Condition sampler not fulfilled. ", "+--"}};
  for (const auto& row : rows)
  {
    GltfJson file;
    file.Floats({0}, "SCALAR");
    file.Floats({0}, "SCALAR");
    file.Add("animations", std::string("{") + row.animation + "}");
    GltfData data = ReadRecords(file.Text(), file.Buffer());
    GltfAnimation& animation = *data.animations.Find(0);
    EXPECT_EQ(ErrorText(animation.ResolveAnimation(&data)), row.message);
    std::string links;
    for (const GltfChannel& channel : animation.channels)
      links += channel.sampler ? "+" : "-";
    EXPECT_EQ(links, row.links) << row.animation;
  }
}

// The keys themselves are not searched.
TEST(SamplerTimeRange, ComesFromTheInputsBounds)
{
  constexpr const char* kNoMinimum = "Illegal state: Condition minArray.GetCount() == 1 not fulfilled. ";
  const struct
  {
    int componentType;
    const char* bounds;
    const char* message;
  } rows[] = {{5126, R"("min":[-7],"max":[1000])", ""},
              {5126, R"("max":[2])", kNoMinimum},
              {5126, R"("min":[1,2],"max":[2])", kNoMinimum},
              {5126, R"("min":[2])", "Illegal state: Condition maxArray.GetCount() == 1 not fulfilled. "},
              {5123, R"("min":[0],"max":[1])",
               "Illegal state: Condition _inputAccessor->GetComponentType() == 5126 not fulfilled. "}};
  for (const auto& row : rows)
  {
    GltfJson file;
    file.Numbers({0, 0}, row.componentType, "SCALAR", row.bounds);
    file.Add("animations", R"({"samplers":[{"input":0,"output":0}]})");
    GltfData data = ReadRecords(file.Text(), file.Buffer());
    ASSERT_EQ(ErrorText(data.animations.Find(0)->ResolveAnimation(&data)), "");
    const Result<GltfTimeRange> range = GetSamplerTimeRange(*data.animations.Find(0)->samplers.Find(0));
    EXPECT_EQ(ErrorText(range), row.message);
    EXPECT_TRUE(range.HasError() || (range.GetValue().minSeconds == -7 && range.GetValue().maxSeconds == 1000));
  }
}

// Values.

struct ValueRow
{
  const char* name;
  const char* interpolation;
  std::vector<float> times;
  std::vector<float> values;
  std::vector<double> askedTimes;
  std::vector<double> expected;
};

const ValueRow kValueRows[] = {
  {"Linear", "LINEAR", {1, 2, 4}, {5, 10, 30}, {0, 1, 1.5, 2, 3.5, 4, 9}, {5, 5, 7.5, 10, 25, 30, 30}},
  {"StepIsZeroBeforeItsFirstKey", "STEP", {1, 2, 4}, {5, 10, 30}, {0, 1, 1.999, 2, 3.5, 4, 9}, {0, 5, 5, 10, 10, 30, 30}},
  // In-tangent, value and out-tangent of each key. With dt = 2: at s = 1/4 the weights are 27/32, 9/32, 5/32 and -3/32, at s = 1/2
  // they are 1/2, 1/4, 1/2 and -1/4.
  {"Spline", "CUBICSPLINE", {0, 2}, {9, 1, 3, -2, 5, 9}, {-1, 0, 0.5, 1, 2, 3}, {1, 1, 2.65625, 4.25, 5, 5}},
  {"NoKeys", "LINEAR", {}, {1}, {0, 1}, {0, 0}},
  {"UnknownNameIsZeroBetweenKeys", "cubicspline", {0, 2}, {3, 5}, {0, 1, 2}, {3, 0, 5}},
  {"EqualTimesTakeTheLater", "LINEAR", {0, 1, 1, 2}, {1, 2, 3, 4}, {0.5, 1, 1.5}, {1.5, 3, 3.5}},
  // The order of the times is 0, 1, 2 with the values 5, 10, 20, but the times of a bracket are taken at the keys' indices: 1 and 2
  // at 0.5, and 2 and 0 at 1.5.
  {"UnsortedTimes", "LINEAR", {2, 0, 1}, {20, 5, 10}, {-1, 0, 0.5, 1, 1.5, 2, 3}, {5, 5, 2.5, 10, 12.5, 20, 20}},
  {"TimeThatIsNoNumberComesLast", "STEP", {0, kNan, 2}, {1, 2, 3}, {1, 5}, {1, 2}},
};

class SamplerValues : public testing::TestWithParam<ValueRow>
{};

TEST_P(SamplerValues, AtTimes)
{
  const ValueRow& row = GetParam();
  const SamplerFile file(row.times, row.values, row.interpolation);
  EXPECT_THAT(file.Scalars(row.askedTimes), ElementsAreArray(row.expected));
  EXPECT_EQ(file.message, "");
}

INSTANTIATE_TEST_SUITE_P(Rows, SamplerValues, testing::ValuesIn(kValueRows), RowName());

TEST(SamplerValues, OfVectorsAndQuaternionsGoByComponent)
{
  const SamplerFile vectors({0, 1}, {1, 2, 3, 3, 6, -3}, "LINEAR", "VEC3");
  BaseArray<Vector> positions;
  ASSERT_EQ(ErrorText(ResampleVector(vectors.Sampler(), SamplerFile::MakeTimes({0.25}), {}, positions)), "");
  EXPECT_EQ(positions[0], (Vector{1.5, 3, 1.5}));

  // No normalising, no shortest way: halfway between a rotation and its negative there is nothing.
  const SamplerFile rotations({0, 1}, {0, 0, 0.5F, 1, 0, 0, -0.5F, -1}, "LINEAR", "VEC4");
  BaseArray<Vector4> quaternions;
  ASSERT_EQ(ErrorText(ResampleQuaternion(rotations.Sampler(), SamplerFile::MakeTimes({0.25, 0.5}), {}, quaternions)), "");
  EXPECT_EQ(quaternions[0], (Vector4{0, 0, 0.25, 0.5}));
  EXPECT_EQ(quaternions[1], Vector4());
}

TEST(SamplerValues, DoNotDependOnTheOrderOfTimes)
{
  std::vector<float> numbers(100);
  std::iota(numbers.begin(), numbers.end(), 0.0F);
  std::vector<double> asked;
  std::vector<double> expected;
  for (int i = 0; i < 400; ++i)
  {
    asked.push_back(i * 37 % 211 * 0.5);  // steps of every size, both ways
    expected.push_back(std::min(std::floor(asked.back()), 99.0));
  }
  EXPECT_THAT(SamplerFile(numbers, numbers, "STEP").Scalars(asked), ElementsAreArray(expected));
}

TEST(SamplerValues, FailWhereAKeyIsMissing)
{
  const SamplerFile file({0, 1, 2}, {1, 2}, "LINEAR");
  EXPECT_THAT(file.Scalars({0.5}), ElementsAre(1.5));
  EXPECT_EQ(file.message, "");
  file.Scalars({0.5, 1.5});
  EXPECT_EQ(file.message, "Illegal state: Condition (idx >= 0 && idx < _count) not fulfilled. ");
  file.Scalars({});
  EXPECT_EQ(file.message, "");
}

}  // namespace
}  // namespace q7z::test
