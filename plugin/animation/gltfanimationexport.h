#pragma once

// The writing side of animation: one sampler writer for each path of a node, and the set of four that an object has while it is
// written. A set lives for the visit of one object; the scene that it reads is the exporter's own copy, whose curves get keys.

#include <memory>

#include "framework/check.h"
#include "plugin/animation/gltfcurves.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

/// Collects one sampler of one object.
class AnimationSamplerWriter
{
public:
  virtual ~AnimationSamplerWriter() = default;
  AnimationSamplerWriter(const AnimationSamplerWriter&) = delete;
  AnimationSamplerWriter& operator=(const AnimationSamplerWriter&) = delete;

  /// Appends times and values to buffer when op has any in the range; without, the sampler stays without data.
  virtual Result<void> WriteTrack(GltfBuffer& buffer, HostObject* op, Bool flipZ, const ExportOptions& options,
                                  const TimeRange& timeRange) noexcept
  {
    static_cast<void>(buffer);
    static_cast<void>(op);
    static_cast<void>(flipZ);
    static_cast<void>(options);
    static_cast<void>(timeRange);
    return MAKE_ERROR(ErrorClass::kFunctionNotImplemented, String());
  }

  void SetDocument(HostDocument* doc) noexcept { _doc = doc; }
  Bool HasData() const noexcept { return _hasInput && _hasOutput; }
  const String& GetPath() const noexcept { return _path; }
  const String& GetInterpolation() const noexcept { return _interpolation; }
  const GltfBufferView& GetView() const noexcept { return _view; }
  const GltfAccessor& GetInput() const noexcept { return _input; }
  const GltfAccessor& GetOutput() const noexcept { return _output; }

protected:
  AnimationSamplerWriter(const String& path, const String& outputType) noexcept
      : _path(path), _view(kVertexTarget), _input("SCALAR"_s, kFloatComponent), _output(outputType, kFloatComponent)
  {}

  /// Marks both accessors; what follows goes behind buffer's end.
  void BeginData(const GltfBuffer& buffer) noexcept;
  /// The times of the keys from first to last, counted from the first; the values will follow them.
  Result<void> WriteTimes(GltfBuffer& buffer, const Keyframes& keyframes, const KeyRange& range) noexcept;
  /// count elements of the output, tightly packed.
  Result<void> WriteValues(GltfBuffer& buffer, const BaseArray<Float32>& values, Int count) noexcept;

  String _path;
  String _interpolation = "LINEAR"_s;
  GltfBufferView _view;  // the times, then the values
  GltfAccessor _input;
  GltfAccessor _output;
  Bool _hasInput = false;
  Bool _hasOutput = false;
  HostDocument* _doc = nullptr;  // not owned
};

/// What an object has under its animated transform.
struct FixedTransform
{
  HostMatrix matrix;
  Vector scale;
};

/// What position, rotation and scale have in common: three curves.
class TransformSamplerWriter : public AnimationSamplerWriter
{
public:
  Result<void> WriteTrack(GltfBuffer& buffer, HostObject* op, Bool flipZ, const ExportOptions& options,
                          const TimeRange& timeRange) noexcept override;

protected:
  TransformSamplerWriter(const String& path, const String& outputType, Int32 parameter, Float restValue) noexcept
      : AnimationSamplerWriter(path, outputType), _parameter(parameter), _restValue(restValue)
  {}

  /// Reads all keys; tangents stay empty where a kind has none. @return whether some tangent is not zero.
  virtual Result<Bool> ReadKeys(const CurveList& curves, HostObject* op, Bool flipZ, const ExportOptions& options,
                                Keyframes& keyframes, TangentList& tangents) noexcept = 0;
  virtual Result<void> WriteKeys(GltfBuffer& buffer, const ExportOptions& options, const Keyframes& keyframes,
                                 const TangentList& tangents, const KeyRange& range) noexcept = 0;

private:
  Int32 _parameter;  // the vector that is animated
  Float _restValue;  // of a component without a curve
};

/// Position and scale: each vector is converted alone, and its tangents leave as they are, times a factor.
class VectorSamplerWriter : public TransformSamplerWriter
{
protected:
  using TransformSamplerWriter::TransformSamplerWriter;

private:
  Result<Bool> ReadKeys(const CurveList& curves, HostObject* op, Bool flipZ, const ExportOptions& options, Keyframes& keyframes,
                        TangentList& tangents) noexcept final;
  Result<void> WriteKeys(GltfBuffer& buffer, const ExportOptions& options, const Keyframes& keyframes,
                         const TangentList& tangents, const KeyRange& range) noexcept final;

  /// The value of a key under the fixed transform of its object.
  virtual Vector Convert(const FixedTransform& base, Bool flipZ, const Vector& value) const noexcept = 0;
  /// By which values and tangents are multiplied as they are written.
  virtual Float GetFactor(const ExportOptions& options) const noexcept = 0;
};

class TranslationSamplerWriter final : public VectorSamplerWriter
{
public:
  TranslationSamplerWriter() noexcept : VectorSamplerWriter("translation"_s, "VEC3"_s, kPositionParameter, 0.0) {}

private:
  Vector Convert(const FixedTransform& base, Bool flipZ, const Vector& value) const noexcept override;
  Float GetFactor(const ExportOptions& options) const noexcept override { return options.exportScale; }
};

class ScaleSamplerWriter final : public VectorSamplerWriter
{
public:
  ScaleSamplerWriter() noexcept : VectorSamplerWriter("scale"_s, "VEC3"_s, kScaleParameter, 1.0) {}

private:
  Vector Convert(const FixedTransform& base, Bool flipZ, const Vector& value) const noexcept override;
  Float GetFactor(const ExportOptions&) const noexcept override { return 1.0; }
};

class RotationSamplerWriter final : public TransformSamplerWriter
{
public:
  RotationSamplerWriter() noexcept : TransformSamplerWriter("rotation"_s, "VEC4"_s, kRotationParameter, 0.0) {}

private:
  Result<Bool> ReadKeys(const CurveList& curves, HostObject* op, Bool flipZ, const ExportOptions& options, Keyframes& keyframes,
                        TangentList& tangents) noexcept override;
  Result<void> WriteKeys(GltfBuffer& buffer, const ExportOptions& options, const Keyframes& keyframes,
                         const TangentList& tangents, const KeyRange& range) noexcept override;
};

/// The strengths of an object's morphs.
class WeightsSamplerWriter final : public AnimationSamplerWriter
{
public:
  WeightsSamplerWriter() noexcept : AnimationSamplerWriter("weights"_s, "SCALAR"_s) {}
  Result<void> WriteTrack(GltfBuffer& buffer, HostObject* op, Bool flipZ, const ExportOptions& options,
                          const TimeRange& timeRange) noexcept override;

private:
  Result<void> WriteMorphs(GltfBuffer& buffer, HostObject* op, const ExportOptions& options, const TimeRange& timeRange) noexcept;
  Result<void> WriteKeyTargets(GltfBuffer& buffer, HostObject* op) noexcept;
};

/// The writers of one object, and the bytes that they share where each object has a buffer of its own.
class NodeAnimationSet
{
public:
  /// @return an out-of-memory error when there is not memory for all.
  static Result<std::unique_ptr<NodeAnimationSet>> Create() noexcept;

  static constexpr Int kWriterCount = 4;
  /// In the order translation, rotation, scale, weights.
  AnimationSamplerWriter& GetWriter(Int index) noexcept { return *_writers[index]; }
  GltfBuffer& GetBuffer() noexcept { return _buffer; }
  Bool HasData() const noexcept;

private:
  NodeAnimationSet() noexcept = default;
  GltfBuffer _buffer;
  std::unique_ptr<AnimationSamplerWriter> _writers[kWriterCount];
};

/// Fills the set from op's tracks, as far as the options ask for them.
Result<void> WriteNodeAnimation(NodeAnimationSet& set, GltfBuffer& buffer, HostObject* op, Bool flipZ, HostDocument* doc,
                                const ExportOptions& options) noexcept;

}  // namespace q7z
