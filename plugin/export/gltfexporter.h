#pragma once

// GLTFExporter: one save from the clone of the document to the closed file. It owns the clone, the JSON under construction with one
// growing array for each top-level member, the maps from objects to indices, and the binary data of the binary form. Indices are
// places at the time of appending and never change.

#include <memory>

#include "framework/data.h"
#include "framework/hashmap.h"
#include "framework/spinlock.h"
#include "plugin/animation/gltfanimationexport.h"
#include "plugin/document/gltfbuffer.h"
#include "plugin/document/gltfcamera.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/export/gltfexportskin.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/geometry/gltfmeshexport.h"
#include "plugin/material/gltfmaterialexport.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

class GLTFExporter
{
public:
  /// Clones the document, which is never changed. @param fileName  of the file to be written.
  static Result<std::unique_ptr<GLTFExporter>> Create(HostDocument* document, const HostFilename& fileName,
                                                      const ExportOptions& options) noexcept;

  // Called in this order, each once.
  Result<void> SetupMaterialExchange() noexcept;
  /// Prepares the clone, visits its objects and puts the JSON together.
  Result<void> WriteScene() noexcept;
  /// The one of the two that fits the options.
  Result<void> WriteGltf() noexcept;
  Result<void> WriteGlb() noexcept;

private:
  /// What a node's place in the hierarchy adds to its element: the children, once all are known.
  struct NodeRecord
  {
    DataDictionary* dictionary = nullptr;  // one of _nodes; null for the scene's root
    BaseArray<Data> children;
  };

  struct PointsHash
  {
    Int32 count;
    UInt hash;
  };

  GLTFExporter(const HostFilename& fileName, const ExportOptions& options) noexcept : _options(options), _fileName(fileName) {}

  // gltfexporter.cpp: the passes.
  Result<void> Init(HostDocument* document) noexcept;
  Result<DataDictionary> MakeAsset() const noexcept;
  Result<void> WalkObjects(Int32 objectCount) noexcept;
  Result<void> JoinHierarchy() noexcept;
  void FreeScene() noexcept;
  Result<void> AssembleDocument() noexcept;
  Result<void> SetArray(const DataKey& key, BaseArray<Data> elements) noexcept;
  Result<void> SetAnimations() noexcept;
  Result<String> WriteJson(Bool formatted) const noexcept;

  // gltfexportobject.cpp: one object.
  Result<void> VisitObject(HostObject* op) noexcept;
  Result<DataDictionary*> AddNode(HostObject* op, Int& nodeIndex) noexcept;
  Result<void> TakeMorphTag(HostObject* op, HostObject* source) noexcept;
  Result<void> SetMesh(HostPolygonObject* op, HostObject* source, DataDictionary& node) noexcept;
  Result<void> SetCamera(HostObject* op, DataDictionary& node) noexcept;
  Result<Int> AppendCameraJson(const GltfCamera& camera) noexcept;
  Result<void> SetTransform(HostObject* op, DataDictionary& node) noexcept;

  // gltfexportanimation.cpp: the samplers and channels of one object.
  Result<void> SetAnimation(HostObject* op, HostObject* source, Int nodeIndex) noexcept;
  Result<void> EmitNodeAnimation(NodeAnimationSet& set, Int nodeIndex) noexcept;
  Result<void> EmitSampler(const AnimationSamplerWriter& writer, Int bufferIndex, Int nodeIndex) noexcept;

  // gltfexportsharing.cpp: which objects share a mesh.
  Result<UInt> PointHash(HostPolygonObject* op) noexcept;
  /// @return a mesh that op can use, or -1; fileUnder is where the next mesh of op is to be filed.
  Result<Int32> FindSharedMesh(HostPolygonObject* op, HostObject* source, HostObject*& fileUnder) noexcept;
  Result<Int32> FindSharedCopy(HostPolygonObject* op, HostObject* source, UInt hashOp) noexcept;

  // gltfexportskin.cpp: skins.
  Result<void> CollectJoints(HostObject* op, DataDictionary* node, Int nodeIndex, Bool flipZ) noexcept;
  Result<HostMatrix> GetSourceMatrix(HostObject* op) noexcept;
  Result<void> WriteSkins() noexcept;
  Result<void> WriteSkin(DataDictionary* node, Int jointCount) noexcept;
  Result<void> AddSkinJoint(DataDictionary* node, Int i, SkinRecord& skin, GltfBuffer& target) noexcept;
  Result<Int> AddSkin(SkinRecord& skin) noexcept;

  // gltfexportbuffers.cpp: buffers, views, accessors and meshes. Each answers the index that its element got.
  Result<void> EncodeBuffer(GltfBuffer& buffer) noexcept;
  Result<Int> AddBuffer(const GltfBuffer& buffer) noexcept;
  Result<Int> AddBufferView(const GltfBufferView& view, Int bufferIndex, Bool omitTarget) noexcept;
  Result<Int> AddAccessor(const GltfAccessor& accessor, Int viewIndex) noexcept;
  /// Puts an image's bytes into the binary data. @return the index of their view.
  Result<Int> AppendToGlb(const GltfImage& image) noexcept;
  Result<void> FillMesh(HostPolygonObject* op, MeshExportData& mesh, GltfBuffer& buffer, MaterialDescriptor& material) noexcept;
  Result<Int> WriteMesh(const MeshExportData& mesh, const GltfBuffer& buffer, const MaterialDescriptor& material) noexcept;
  Result<DataDictionary> WriteAttributes(const MeshExportData& mesh, Int bufferIndex, Int& indices) noexcept;
  Result<void> SetMorphMembers(const MeshExportData& mesh, DataDictionary& element) noexcept;
  Result<BaseArray<Data>> WriteTargets(const MeshExportData& mesh, Int bufferIndex) noexcept;
  Result<void> SetAttribute(DataDictionary& attributes, const DataKey& name, const MeshAccessor& accessor,
                            Int viewIndex) noexcept;

  // gltfexportmaterials.cpp: materials and what they refer to. Each Write answers the index that its element got.
  Result<void> FillMaterial(const HostPolygonObject* op, MaterialDescriptor& material) noexcept;
  Result<void> SetMaterial(const MaterialDescriptor& material, DataDictionary& primitive) noexcept;
  Result<Int> WriteMaterial(const MaterialDescriptor& material) noexcept;
  Result<void> SetTexture(const MaterialDescriptor& material, TextureKind kind, const DataKey& member,
                          DataDictionary& owner) noexcept;
  Result<Int> WriteTexture(const GltfSampler& sampler, Int imageIndex) noexcept;
  Result<Int> WriteImage(const GltfImage& image) noexcept;

  GltfPreprocessor _preprocessor;
  HostOwner<HostDocument> _doc;
  ExportOptions _options;
  HostFilename _fileName;
  std::unique_ptr<DataDictionary> _jsonDoc;  // the root of the file
  DataDictionary _scene;
  BaseArray<std::unique_ptr<DataDictionary>> _nodes;  // each stays open for later additions
  BaseArray<Data> _meshes;
  BaseArray<Data> _cameras;
  BaseArray<Data> _skins;
  BaseArray<Data> _buffers;
  BaseArray<Data> _bufferViews;
  BaseArray<Data> _accessors;
  BaseArray<Data> _images;
  BaseArray<Data> _samplers;
  BaseArray<Data> _textures;
  BaseArray<Data> _materials;
  BaseArray<Data> _animationSamplers;  // of the one animation
  BaseArray<Data> _animationChannels;
  GltfBuffer _glbBuffer;  // all binary data of the binary form
  MaterialIndexMap _materialIndices;
  DupDetect _textureCache;
  DataDictionary _exchangeData;
  HashMap<HostObject*, UInt32> _jointNodes;                     // by joints as they stood before the conversion
  HashMap<DataDictionary*, BaseArray<JointEntry>> _skinJoints;  // by the node of a skinned mesh
  HashMap<HostObject*, HostMatrix> _sourceMatrices;             // global; of joints, skinned meshes and what is above them
  HashMap<HostObject*, NodeRecord> _objectNodes;                // under null the scene's root
  HashMap<HostObject*, Int32> _meshIndices;
  HashMap<HostObject*, HashMap<UInt, HostObject*>> _sourceCopies;  // by the hash of their points, the first of each
  HashMap<const Vector*, PointsHash> _pointHashes;
  SpinLock _progressLock;
};

/// Whether the walk leaves an object out, with all below it.
Bool IsSkipped(HostObject* op) noexcept;

}  // namespace q7z
