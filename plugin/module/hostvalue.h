#pragma once

// The values that cross the boundary by copy: parameter ids, parameter values, unit scales, file names.

#include <new>
#include <utility>

#include "framework/hosttime.h"
#include "framework/string.h"
#include "framework/url.h"
#include "framework/vector.h"
#include "plugin/module/hostfwd.h"
#include "plugin/module/hostids.h"

namespace q7z
{

class HostBackgroundJob;

/// One level of a parameter id.
struct HostDescLevel
{
  Int32 id = 0;
  Int32 dataType = 0;
  Int32 creator = 0;
};

/// A path of one to three levels. Two ids are equal when their levels' ids are; data types do not count.
class HostDescId
{
public:
  constexpr HostDescId() noexcept = default;
  constexpr HostDescId(Int32 id) noexcept : _levels{{id, 0, 0}}, _depth(1) {}
  constexpr HostDescId(Int32 first, Int32 second) noexcept : _levels{{first, 0, 0}, {second, 0, 0}}, _depth(2) {}
  constexpr HostDescId(HostDescLevel first) noexcept : _levels{first}, _depth(1) {}
  constexpr HostDescId(HostDescLevel first, HostDescLevel second) noexcept : _levels{first, second}, _depth(2) {}
  constexpr HostDescId(HostDescLevel first, HostDescLevel second, HostDescLevel third) noexcept
      : _levels{first, second, third}, _depth(3)
  {}

  constexpr Int32 GetDepth() const noexcept { return _depth; }
  constexpr const HostDescLevel& operator[](Int32 level) const noexcept { return _levels[level]; }

  friend constexpr Bool operator==(const HostDescId& a, const HostDescId& b) noexcept
  {
    return a._depth == b._depth && a._levels[0].id == b._levels[0].id && a._levels[1].id == b._levels[1].id &&
           a._levels[2].id == b._levels[2].id;
  }
  /// By the ids of the levels, a shorter path before its extensions.
  friend constexpr Bool operator<(const HostDescId& a, const HostDescId& b) noexcept
  {
    for (Int32 i = 0; i < 3; ++i)
    {
      if (i >= a._depth || i >= b._depth)
        return a._depth < b._depth;
      if (a._levels[i].id != b._levels[i].id)
        return a._levels[i].id < b._levels[i].id;
    }
    return false;
  }

private:
  HostDescLevel _levels[3] = {};
  Int32 _depth = 0;
};

/// A length unit: factor times the unit of the code. Codes: 1 km, 2 m, 3 cm, 4 mm, 5 µm, 6 nm, 7 mile, 8 yard, 9 foot, 10 inch.
struct HostUnitScale
{
  Float factor = 1;
  Int32 unitCode = 3;
  friend constexpr Bool operator==(const HostUnitScale&, const HostUnitScale&) noexcept = default;
};

enum class HostValueKind : Byte
{
  kNil,
  kBool,
  kInt,
  kFloat,
  kString,
  kTime,
  kVector,
  kVector4,
  kUnit,
  kLink,
};

/// A parameter's value. The typed getters convert among Bool, Int and Float and answer the default for all other kinds.
class HostValue
{
public:
  HostValue() noexcept : _vector() {}
  HostValue(Bool value) noexcept : _int(value), _kind(HostValueKind::kBool) {}
  HostValue(Int32 value) noexcept : _int(value), _kind(HostValueKind::kInt) {}
  HostValue(Int value) noexcept : _int(value), _kind(HostValueKind::kInt) {}
  HostValue(Float value) noexcept : HostValue(HostValueKind::kFloat, {value, 0, 0, 0}) {}
  HostValue(String value) noexcept : _string(std::move(value)), _kind(HostValueKind::kString) {}
  HostValue(const HostTime& value) noexcept : HostValue(HostValueKind::kTime, {value.numerator, value.denominator, 0, 0}) {}
  HostValue(const Vector& value) noexcept : HostValue(HostValueKind::kVector, {value.x, value.y, value.z, 0}) {}
  HostValue(const Vector4& value) noexcept : HostValue(HostValueKind::kVector4, value) {}
  HostValue(const HostUnitScale& value) noexcept
      : HostValue(HostValueKind::kUnit, {value.factor, static_cast<Float>(value.unitCode), 0, 0})
  {}
  /// A link; null is the empty link. Not owned; the host clears links to what is freed.
  static HostValue Link(HostNode* node) noexcept
  {
    HostValue value;
    value._link = node;
    value._kind = HostValueKind::kLink;
    return value;
  }
  HostValue(const void*) = delete;  // no pointer becomes a Bool

  HostValue(const HostValue& other) noexcept { CopyContent(other); }
  HostValue(HostValue&& other) noexcept { MoveContent(other); }
  HostValue& operator=(HostValue other) noexcept
  {
    Release();
    MoveContent(other);
    return *this;
  }
  ~HostValue() { Release(); }

  HostValueKind GetKind() const noexcept { return _kind; }
  Bool IsNil() const noexcept { return _kind == HostValueKind::kNil; }

  Bool GetBool(Bool defaultValue = false) const noexcept
  {
    return IsInteger() ? _int != 0 : _kind == HostValueKind::kFloat ? _vector.x != 0 : defaultValue;
  }
  /// A Float truncates; one that is not finite or does not fit gives the default.
  Int GetInt(Int defaultValue = 0) const noexcept
  {
    if (IsInteger())
      return _int;
    const Bool fits = _kind == HostValueKind::kFloat && _vector.x > -9.2233720368547e18 && _vector.x < 9.2233720368547e18;
    return fits ? static_cast<Int>(_vector.x) : defaultValue;
  }
  Int32 GetInt32(Int32 defaultValue = 0) const noexcept
  {
    const Int value = GetInt(defaultValue);
    return value < INT32_MIN || value > INT32_MAX ? defaultValue : static_cast<Int32>(value);
  }
  Float GetFloat(Float defaultValue = 0) const noexcept
  {
    return _kind == HostValueKind::kFloat ? _vector.x : IsInteger() ? static_cast<Float>(_int) : defaultValue;
  }
  String GetString(const String& defaultValue = String()) const noexcept
  {
    return _kind == HostValueKind::kString ? _string : defaultValue;
  }
  HostTime GetTime(const HostTime& defaultValue = HostTime()) const noexcept
  {
    return _kind == HostValueKind::kTime ? HostTime{_vector.x, _vector.y} : defaultValue;
  }
  Vector GetVector(const Vector& defaultValue = Vector()) const noexcept
  {
    return _kind == HostValueKind::kVector ? Vector{_vector.x, _vector.y, _vector.z} : defaultValue;
  }
  Vector4 GetVector4(const Vector4& defaultValue = Vector4()) const noexcept
  {
    return _kind == HostValueKind::kVector4 ? _vector : defaultValue;
  }
  HostUnitScale GetUnit(const HostUnitScale& defaultValue = HostUnitScale()) const noexcept
  {
    return _kind == HostValueKind::kUnit ? HostUnitScale{_vector.x, static_cast<Int32>(_vector.y)} : defaultValue;
  }
  HostNode* GetLink() const noexcept { return _kind == HostValueKind::kLink ? _link : nullptr; }

  friend Bool operator==(const HostValue& a, const HostValue& b) noexcept
  {
    if (a._kind != b._kind)
      return false;
    switch (a._kind)
    {
      case HostValueKind::kBool:
      case HostValueKind::kInt: return a._int == b._int;
      case HostValueKind::kString: return a._string == b._string;
      case HostValueKind::kLink: return a._link == b._link;
      default: return a._vector == b._vector;
    }
  }

private:
  HostValue(HostValueKind kind, const Vector4& vector) noexcept : _vector(vector), _kind(kind) {}

  Bool IsInteger() const noexcept { return _kind == HostValueKind::kInt || _kind == HostValueKind::kBool; }

  // Both fill a value that holds no text.
  void CopyContent(const HostValue& other) noexcept
  {
    if (other._kind == HostValueKind::kString)
      ::new (&_string) String(other._string);
    else
      CopyPlain(other);
    _kind = other._kind;
  }
  void MoveContent(HostValue& other) noexcept
  {
    if (other._kind == HostValueKind::kString)
      ::new (&_string) String(std::move(other._string));
    else
      CopyPlain(other);
    _kind = other._kind;
  }
  void CopyPlain(const HostValue& other) noexcept
  {
    if (other.IsInteger())
      _int = other._int;
    else if (other._kind == HostValueKind::kLink)
      _link = other._link;
    else
      _vector = other._vector;
  }
  void Release() noexcept
  {
    if (_kind == HostValueKind::kString)
      _string.~String();
  }

  // Scenes hold values by the hundred thousand, so that the kinds share their memory.
  union
  {
    Int _int;         // of kBool and kInt
    Vector4 _vector;  // of all kinds that have no member of their own
    HostNode* _link;
    String _string;
  };
  HostValueKind _kind = HostValueKind::kNil;
};

/// The name of a local file as the classic API wants it, with the background job that the host runs a load of it under.
class HostFilename
{
public:
  HostFilename() noexcept = default;
  explicit HostFilename(String path, HostBackgroundJob* job = nullptr) noexcept : _path(std::move(path)), _job(job) {}

  /// A local path with "/" between components; no percent codes.
  const String& GetPath() const noexcept { return _path; }
  Bool IsPopulated() const noexcept { return _path.IsPopulated(); }

  /// The attribute `net.tarno.url.backgroundjob`: the job of the load, or null. Not owned; valid during the load.
  HostBackgroundJob* GetBackgroundJob() const noexcept { return _job; }

  /// Whether the name ends in "." and the suffix, in upper or lower case.
  Bool HasSuffix(const String& suffix) const noexcept
  {
    const Int dot = _path.FindLast('.');
    return dot >= 0 && _path.GetPart(dot + 1, _path.GetByteCount()).EqualsIgnoringCase(suffix);
  }

private:
  String _path;
  HostBackgroundJob* _job = nullptr;
};

/// From a local Url to a file name. Shares the text, so it cannot fail.
inline HostFilename TarnoConvert(const Url& url) noexcept { return HostFilename(url.GetPath()); }

/// From a file name to a Url of the scheme file.
inline Result<Url> TarnoConvert(const HostFilename& fileName) noexcept { return Url::FromPath(fileName.GetPath()); }

}  // namespace q7z
