#pragma once

// Writes JSON text into a sink as it is told, without keeping it. Used by the generators of the samples and of the benchmark
// inputs. Commas and escapes are the writer's affair, that keys stand in objects only is the caller's.

#include "samples/generate/bytesink.h"

#include <functional>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace q7z::generate
{

class JsonWriter
{
public:
  /// @param lineDepth  what stands in this many brackets, or in fewer, begins on a line of its own; 0 writes no line breaks
  explicit JsonWriter(ByteSink& target, Int lineDepth = 0) : _target(target), _lineDepth(lineDepth) {}

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  /// Writes a member's name; its value comes next.
  void Key(std::string_view key);

  void Value(std::string_view text);
  void Value(const char* text) { Value(std::string_view(text)); }
  void Value(bool value) { Plain(value ? "true" : "false"); }
  void Value(Int value);
  void Value(int value) { Value(Int{value}); }

  /// Writes the shortest text that reads back as the same 32-bit float; the value is finite.
  void Value(Float32 value);

  void Value(std::span<const Float32> values);
  void Value(std::initializer_list<Float32> values) { Value(std::span<const Float32>(values.begin(), values.size())); }
  void Value(const std::vector<Float32>& values) { Value(std::span<const Float32>(values)); }

  /// Writes a string whose text the callback puts into the sink, which must need no escapes.
  void LongValue(const std::function<void(ByteSink&)>& writeText);

  template <typename T>
  void Member(std::string_view key, const T& value)
  {
    Key(key);
    Value(value);
  }

  void Member(std::string_view key, std::initializer_list<Float32> values)
  {
    Key(key);
    Value(values);
  }

private:
  void Open(char bracket);
  void Close(char bracket);
  void Separate();  // a comma where one belongs, and the line break
  void BreakLine();
  void Plain(std::string_view text);
  void Quote(std::string_view text);

  ByteSink& _target;
  Int _lineDepth = 0;
  std::vector<bool> _hasElements;  // for each open bracket
  bool _afterKey = false;
};

}  // namespace q7z::generate
