// Samplers in time: their range, their value at any time, and whether they are constant.

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

  std::vector<double> Scalars(const std::vector<double>& times, const SamplerLayout& layout = {}) const
  {
    BaseArray<Float> values;
    message = ErrorText(ResampleScalar(Sampler(), MakeTimes(times), layout, values));
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

// Time ranges.

struct RangeRow
{
  const char* name;
  const char* bounds;
  const char* message;
};

class SamplerTimeRange : public testing::TestWithParam<RangeRow>
{};

// The keys themselves are not searched.
TEST_P(SamplerTimeRange, ComesFromTheInputsBounds)
{
  const std::string accessor = R"(,"accessors":[{"bufferView":0,"count":2,"type":"SCALAR","componentType":)";
  GltfData data = ReadRecords(R"({"buffers":[{"byteLength":8}],"bufferViews":[{"buffer":0,"byteLength":8}])" + accessor +
                                GetParam().bounds + R"(}],"animations":[{"samplers":[{"input":0,"output":0}]}]})",
                              Bytes(8));
  ASSERT_EQ(ErrorText(data.animations.Find(0)->ResolveAnimation(&data)), "");
  const Result<GltfTimeRange> range = GetSamplerTimeRange(*data.animations.Find(0)->samplers.Find(0));
  EXPECT_EQ(ErrorText(range), GetParam().message);
  EXPECT_TRUE(range.HasError() || (range.GetValue().minSeconds == -7 && range.GetValue().maxSeconds == 1000));
}

const RangeRow kRangeRows[] = {
  {"Both", R"(5126,"min":[-7],"max":[1000])", ""},
  {"NoMin", R"(5126,"max":[2])", "Illegal state: Condition minArray.GetCount() == 1 not fulfilled. "},
  {"TwoMin", R"(5126,"min":[1,2],"max":[2])", "Illegal state: Condition minArray.GetCount() == 1 not fulfilled. "},
  {"NoMax", R"(5126,"min":[2])", "Illegal state: Condition maxArray.GetCount() == 1 not fulfilled. "},
  {"NotFloats", R"(5125,"min":[0],"max":[1])",
   "Illegal state: Condition _inputAccessor->GetComponentType() == 5126 not fulfilled. "},
};
INSTANTIATE_TEST_SUITE_P(Rows, SamplerTimeRange, testing::ValuesIn(kRangeRows), RowName());

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
  {"NoTimes", "LINEAR", {0}, {1}, {}, {}},
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

TEST(SamplerValues, OfOneTargetAmongSeveral)
{
  const SamplerFile linear({0, 1}, {1, 2, 3, 4, 5, 6}, "LINEAR");
  EXPECT_THAT(linear.Scalars({0, 0.5, 1}, {3, 1}), ElementsAre(2, 3.5, 5));

  const SamplerFile spline({0, 1}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, "CUBICSPLINE");
  EXPECT_THAT(spline.Scalars({0, 1}, {3, 1}), ElementsAre(4, 13));
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
  file.Scalars({}, {});
  EXPECT_EQ(file.message, "");
}

// Constant samplers.

struct ConstantRow
{
  const char* name;
  const char* interpolation;
  std::vector<float> values;
  SamplerLayout layout;
  Bool isConstant;
};

const ConstantRow kConstantRows[] = {
  {"Equal", "LINEAR", {2, 2, 2}, {}, true},
  {"LastDiffers", "LINEAR", {2, 2, 2.0000002F}, {}, false},
  {"ZerosOfBothSigns", "LINEAR", {0, -0.0F, 0}, {}, true},
  {"NoNumber", "LINEAR", {kNan, kNan, kNan}, {}, false},
  {"SplineEqual", "CUBICSPLINE", {1, 2, 3, 1, 2, 3, 1, 2, 3}, {}, true},
  {"InTangentDiffers", "CUBICSPLINE", {1, 2, 3, 0, 2, 3, 1, 2, 3}, {}, false},
  {"OutTangentDiffers", "CUBICSPLINE", {1, 2, 3, 1, 2, 3, 1, 2, 0}, {}, false},
  {"OneTargetEqual", "LINEAR", {1, 5, 2, 5, 3, 5}, {2, 1}, true},
  {"OneTargetDiffers", "LINEAR", {1, 5, 2, 5, 3, 5}, {2, 0}, false},
};

class ConstantSampler : public testing::TestWithParam<ConstantRow>
{};

TEST_P(ConstantSampler, HasEqualKeys)
{
  const SamplerFile file({0, 1, 2}, GetParam().values, GetParam().interpolation);
  const Result<Bool> isConstant = IsConstantSampler<Float>(file.Sampler(), GetParam().layout);
  ASSERT_EQ(ErrorText(isConstant), "");
  EXPECT_EQ(isConstant.GetValue(), GetParam().isConstant);
}

INSTANTIATE_TEST_SUITE_P(Rows, ConstantSampler, testing::ValuesIn(kConstantRows), RowName());

TEST(ConstantSampler, HasFewerThanTwoKeysOrEqualComponents)
{
  const SamplerFile one({0}, {}, "LINEAR");  // nothing is read
  EXPECT_TRUE(IsConstantSampler<Float>(one.Sampler(), {}).GetValue());
  const SamplerFile scales({0, 1}, {1, 2, 3, 1, 2, 4}, "LINEAR", "VEC3");
  EXPECT_FALSE(IsConstantSampler<Vector>(scales.Sampler(), {}).GetValue());
  const SamplerFile rotations({0, 1}, {0, 0, 0, 1, 0, 0, 0, 2}, "LINEAR", "VEC4");
  EXPECT_FALSE(IsConstantSampler<Vector4>(rotations.Sampler(), {}).GetValue());
  EXPECT_EQ(ErrorText(IsConstantSampler<Vector4>(scales.Sampler(), {})),
            "Illegal state: Condition count <= GetComponentCount() not fulfilled. ");
}

}  // namespace
}  // namespace q7z::test
