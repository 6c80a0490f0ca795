#include "tests/animation/tracktext.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlesstake.h"

namespace q7z::test
{

namespace
{

std::string WriteNumber(Float value)
{
  char text[32];
  std::snprintf(text, sizeof(text), "%.6g", std::fabs(value) < 1e-6 ? 0 : value);
  return text;
}

std::string WriteTime(const HostTime& time)
{
  return WriteNumber(time.numerator) + (time.denominator == 1 ? "" : "/" + WriteNumber(time.denominator));
}

std::string WriteTrackName(const HostDescId& id)
{
  const std::string vector = id[0].id == 903   ? "pos"
                             : id[0].id == 904 ? "rot"
                             : id[0].id == 905 ? "scale"
                                               : std::to_string(id[0].id);
  const int component = id[1].id - 1000;
  return vector + "." + (component >= 0 && component < 3 ? std::string(1, "xyz"[component]) : std::to_string(id[1].id));
}

std::string WriteTangent(char side, const HostTime& time, Float value)
{
  if (time.numerator == 0 && value == 0)
    return "";
  return side + WriteTime(time) + "," + WriteNumber(value);
}

char GetModeLetter(InterpolationMode mode)
{
  return mode == InterpolationMode::Spline ? 'S' : mode == InterpolationMode::Linear ? 'L' : 'H';
}

std::string WriteTrack(HostTrack* track)
{
  HostCurve* const curve = track->GetCurve(false);
  if (!curve)
    return WriteTrackName(track->GetDescId()) + " -\n";
  std::string keys;
  char letter = 0;
  for (Int32 i = 0; i < curve->GetKeyCount(); ++i)
  {
    HostKey* const key = curve->GetKey(i);
    const HostTangents tangents = curve->GetTangents(i);
    keys += " " + WriteTime(key->GetTime()) + "=" + WriteNumber(key->GetValue()) +
            WriteTangent('<', tangents.leftTime, tangents.leftValue) + WriteTangent('>', tangents.rightTime, tangents.rightValue);
    const char own = GetModeLetter(key->GetInterpolation());
    letter = letter == 0 || letter == own ? own : '?';
  }
  return WriteTrackName(track->GetDescId()) + " " + letter + keys + "\n";
}

/// The least or the greatest of those that are finite, as a text.
std::string WriteBound(std::vector<float> numbers, bool least)
{
  std::erase_if(numbers, [](float number) { return !std::isfinite(number); });
  if (numbers.empty())
    return "0";
  return WriteNumber(least ? *std::ranges::min_element(numbers) : *std::ranges::max_element(numbers));
}

}  // namespace

std::string WriteTracks(const HostNode* node)
{
  std::string text;
  for (const HostDescId& id : kTransformTrackIds)
  {
    if (HostTrack* const track = HostTrack::Find(node, id))
      text += WriteTrack(track);
  }
  return text;
}

std::string WriteTakeTracks(HostDocument* document, Int takeIndex, HostNode* node)
{
  const HeadlessTake* const take = ToHeadless(document)->GetTakeData().GetTake(takeIndex);
  HeadlessOverride* const over = take->FindOverride(ToHeadless(node));
  return over ? WriteTracks(ToHost(over)) : "no override";
}

HostObject* FindObject(HostDocument* document, const std::string& name)
{
  for (HostObject* object = document->GetFirstObject(); object;)
  {
    if (object->GetName().GetView() == name)
      return object;
    HostObject* next = object->GetDown();
    while (!next && object)
    {
      next = object->GetNext();
      if (!next)
        object = object->GetUp();
    }
    object = next;
  }
  return nullptr;
}

AnimationFile& AnimationFile::Animation(const std::string& name, const std::vector<ChannelText>& channels)
{
  std::string channelTexts;
  std::string samplerTexts;
  int index = 0;
  for (const ChannelText& channel : channels)
  {
    const std::string bounds =
      R"("min":[)" + WriteBound(channel.times, true) + R"(],"max":[)" + WriteBound(channel.times, false) + "]";
    const int input = _file.Values(channel.times, 5126, "SCALAR", bounds);
    const int output = _file.Floats(channel.values, std::string(channel.path) == "rotation" ? "VEC4" : "VEC3");
    const std::string comma = index ? "," : "";
    channelTexts += comma + R"({"sampler":)" + std::to_string(index) + R"(,"target":{"node":)" + std::to_string(channel.node) +
                    R"(,"path":")" + channel.path + R"("}})";
    samplerTexts += comma + R"({"input":)" + std::to_string(input) + R"(,"output":)" + std::to_string(output) +
                    R"(,"interpolation":")" + channel.interpolation + R"("})";
    ++index;
  }
  const std::string nameText = name.empty() ? "" : R"("name":")" + name + R"(",)";
  return RawAnimation(nameText + R"("channels":[)" + channelTexts + R"(],"samplers":[)" + samplerTexts + "]");
}

}  // namespace q7z::test
