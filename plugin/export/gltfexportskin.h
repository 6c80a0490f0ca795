#pragma once

// The record of one element of `skins` while it is written. It lives from the first joint of a skin to its element; the exporter
// collects the joints during the walk and makes the records behind it, when every joint has its node.

#include "framework/hostmatrix.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/module/hostobject.h"

namespace q7z
{

/// One joint of a skinned mesh.
struct JointEntry
{
  HostObject* op = nullptr;  ///< as it stood before the conversion; not owned
  HostMatrix inverseBind;    ///< from the mesh's space to the joint's, in the file's lengths and handedness
};

class SkinRecord
{
public:
  SkinRecord() noexcept;

  /// Appends a joint; all of a skin's matrices stand one behind the other in the same target.
  Result<void> AddJoint(GltfBuffer& target, const HostMatrix& matrix, Int nodeIndex) noexcept;

  /// For the form in which every skin has a buffer of its own.
  GltfBuffer& GetBuffer() noexcept { return _buffer; }
  const GltfBufferView& GetView() const noexcept { return _view; }
  const GltfAccessor& GetAccessor() const noexcept { return _accessor; }
  /// The node indices, in the order of the matrices.
  BaseArray<Data> TakeJoints() noexcept { return std::move(_joints); }

private:
  GltfBuffer _buffer;
  GltfBufferView _view;
  GltfAccessor _accessor;
  BaseArray<Data> _joints;
};

/// A joint's matrix in its mesh's space, mirrored: position and rotation are the mirrored ones, scale and shear stay.
HostMatrix MirrorMatrix(const HostMatrix& matrix) noexcept;

}  // namespace q7z
