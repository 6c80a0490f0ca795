#pragma once

// The member names of the file format, interned once, and the keys of the import options.

#include "framework/data.h"

namespace q7z::keys
{

inline const DataKey kAccessors("accessors");
inline const DataKey kAlphaCutoff("alphaCutoff");
inline const DataKey kAlphaMode("alphaMode");
inline const DataKey kAnimations("animations");
inline const DataKey kAsset("asset");
inline const DataKey kAttributes("attributes");
inline const DataKey kBaseColorFactor("baseColorFactor");
inline const DataKey kBaseColorTexture("baseColorTexture");
inline const DataKey kBuffer("buffer");
inline const DataKey kBuffers("buffers");
inline const DataKey kBufferView("bufferView");
inline const DataKey kBufferViews("bufferViews");
inline const DataKey kByteLength("byteLength");
inline const DataKey kByteOffset("byteOffset");
inline const DataKey kByteStride("byteStride");
inline const DataKey kCamera("camera");
inline const DataKey kCameras("cameras");
inline const DataKey kChannels("channels");
inline const DataKey kChildren("children");
inline const DataKey kColor0("COLOR_0");
inline const DataKey kComponentType("componentType");
inline const DataKey kCopyright("copyright");
inline const DataKey kCount("count");
inline const DataKey kDoubleSided("doubleSided");
inline const DataKey kEmissiveFactor("emissiveFactor");
inline const DataKey kEmissiveTexture("emissiveTexture");
inline const DataKey kExtensions("extensions");
inline const DataKey kExtensionsRequired("extensionsRequired");
inline const DataKey kExtensionsUsed("extensionsUsed");
inline const DataKey kExtras("extras");
inline const DataKey kGenerator("generator");
inline const DataKey kId("id");
inline const DataKey kImages("images");
inline const DataKey kIndex("index");
inline const DataKey kIndices("indices");
inline const DataKey kInverseBindMatrices("inverseBindMatrices");
inline const DataKey kJoints("joints");
inline const DataKey kJoints0("JOINTS_0");
inline const DataKey kMagFilter("magFilter");
inline const DataKey kMaterial("material");
inline const DataKey kMaterials("materials");
inline const DataKey kMatrix("matrix");
inline const DataKey kMax("max");
inline const DataKey kMesh("mesh");
inline const DataKey kMeshes("meshes");
inline const DataKey kMetallicFactor("metallicFactor");
inline const DataKey kMetallicRoughnessTexture("metallicRoughnessTexture");
inline const DataKey kMimeType("mimeType");
inline const DataKey kMin("min");
inline const DataKey kMinFilter("minFilter");
inline const DataKey kName("name");
inline const DataKey kNodes("nodes");
inline const DataKey kNormal("NORMAL");
inline const DataKey kNormalized("normalized");
inline const DataKey kNormalScale("normalScale");
inline const DataKey kNormalTexture("normalTexture");
inline const DataKey kOcclusionStrength("occlusionStrength");
inline const DataKey kOcclusionTexture("occlusionTexture");
inline const DataKey kPbrMetallicRoughness("pbrMetallicRoughness");
inline const DataKey kPosition("POSITION");
inline const DataKey kPrimitives("primitives");
inline const DataKey kRequired("required");
inline const DataKey kRotation("rotation");
inline const DataKey kRoughnessFactor("roughnessFactor");
inline const DataKey kSampler("sampler");
inline const DataKey kSamplers("samplers");
inline const DataKey kScale("scale");
inline const DataKey kScene("scene");
inline const DataKey kScenes("scenes");
inline const DataKey kSkeleton("skeleton");
inline const DataKey kSkin("skin");
inline const DataKey kSkins("skins");
inline const DataKey kSource("source");
inline const DataKey kSpaceId("spaceId");
inline const DataKey kSparse("sparse");
inline const DataKey kStrength("strength");
inline const DataKey kTarget("target");
inline const DataKey kTargetNames("targetNames");
inline const DataKey kTargets("targets");
inline const DataKey kTexCoord("texCoord");
inline const DataKey kTexcoord0("TEXCOORD_0");
inline const DataKey kTextures("textures");
inline const DataKey kTranslation("translation");
inline const DataKey kType("type");
inline const DataKey kUri("uri");
inline const DataKey kVersion("version");
inline const DataKey kWeights("weights");
inline const DataKey kWeights0("WEIGHTS_0");
inline const DataKey kWrapS("wrapS");
inline const DataKey kWrapT("wrapT");

}  // namespace q7z::keys
