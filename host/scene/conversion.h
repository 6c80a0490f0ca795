#pragma once

// The one way between the interface's opaque entities and the scene model's classes. A HostNode* of any kind is the address of a
// HeadlessNode, a HostObject* that of a HeadlessObject, and so on; both functions cost nothing. Null stays null.

#include "plugin/module/hostfwd.h"

namespace q7z
{

class HeadlessNode;
class HeadlessNamedNode;
class HeadlessDocument;
class HeadlessObject;
class HeadlessPolygonObject;
class HeadlessTag;
class HeadlessCornerTag;
class HeadlessVertexColorTag;
class HeadlessSelectionTag;
class HeadlessTextureTag;
class HeadlessWeightTag;
class HeadlessPoseMorphTag;
class HeadlessTrack;
class HeadlessCurve;
class HeadlessKey;
class HeadlessTakeData;
class HeadlessTake;
class HeadlessOverride;
class HeadlessLayer;
class HeadlessMaterial;
class HeadlessShader;
class HeadlessContainer;
class HeadlessSelection;
class HeadlessNeighbor;
class HeadlessMorph;
class HeadlessPointNode;
class HeadlessAliasTrans;

template <typename Host>
struct HeadlessSide;
template <typename Headless>
struct HostSide;

#define Q7Z_SCENE_PAIR(hostClass, headlessClass) \
  template <>                                    \
  struct HeadlessSide<hostClass>                 \
  {                                              \
    using Type = headlessClass;                  \
  };
#define Q7Z_SCENE_TWINS(hostClass, headlessClass) \
  Q7Z_SCENE_PAIR(hostClass, headlessClass)        \
  template <>                                     \
  struct HostSide<headlessClass>                  \
  {                                               \
    using Type = hostClass;                       \
  };

Q7Z_SCENE_TWINS(HostNode, HeadlessNode)
Q7Z_SCENE_TWINS(HostDocument, HeadlessDocument)
Q7Z_SCENE_TWINS(HostObject, HeadlessObject)
Q7Z_SCENE_TWINS(HostPolygonObject, HeadlessPolygonObject)
Q7Z_SCENE_TWINS(HostTag, HeadlessTag)
Q7Z_SCENE_PAIR(HostNormalTag, HeadlessCornerTag)
Q7Z_SCENE_PAIR(HostUvwTag, HeadlessCornerTag)
Q7Z_SCENE_TWINS(HostVertexColorTag, HeadlessVertexColorTag)
Q7Z_SCENE_TWINS(HostPolygonSelectionTag, HeadlessSelectionTag)
Q7Z_SCENE_TWINS(HostTextureTag, HeadlessTextureTag)
Q7Z_SCENE_TWINS(HostWeightTag, HeadlessWeightTag)
Q7Z_SCENE_TWINS(HostPoseMorphTag, HeadlessPoseMorphTag)
Q7Z_SCENE_TWINS(HostTrack, HeadlessTrack)
Q7Z_SCENE_TWINS(HostCurve, HeadlessCurve)
Q7Z_SCENE_TWINS(HostKey, HeadlessKey)
Q7Z_SCENE_TWINS(HostTakeData, HeadlessTakeData)
Q7Z_SCENE_TWINS(HostTake, HeadlessTake)
Q7Z_SCENE_TWINS(HostOverride, HeadlessOverride)
Q7Z_SCENE_TWINS(HostLayer, HeadlessLayer)
Q7Z_SCENE_TWINS(HostMaterial, HeadlessMaterial)
Q7Z_SCENE_TWINS(HostShader, HeadlessShader)
Q7Z_SCENE_TWINS(HostContainer, HeadlessContainer)
Q7Z_SCENE_TWINS(HostSelection, HeadlessSelection)
Q7Z_SCENE_TWINS(HostNeighbor, HeadlessNeighbor)
Q7Z_SCENE_TWINS(HostMorph, HeadlessMorph)
Q7Z_SCENE_TWINS(HostPointNode, HeadlessPointNode)
Q7Z_SCENE_TWINS(HostAliasTrans, HeadlessAliasTrans)

// A node of any kind that links can lead to.
template <>
struct HostSide<HeadlessNamedNode>
{
  using Type = HostNode;
};

#undef Q7Z_SCENE_PAIR
#undef Q7Z_SCENE_TWINS

template <typename Host>
typename HeadlessSide<Host>::Type* ToHeadless(Host* entity) noexcept
{
  return reinterpret_cast<typename HeadlessSide<Host>::Type*>(entity);
}
template <typename Host>
const typename HeadlessSide<Host>::Type* ToHeadless(const Host* entity) noexcept
{
  return reinterpret_cast<const typename HeadlessSide<Host>::Type*>(entity);
}
template <typename Headless>
typename HostSide<Headless>::Type* ToHost(Headless* entity) noexcept
{
  return reinterpret_cast<typename HostSide<Headless>::Type*>(entity);
}
template <typename Headless>
const typename HostSide<Headless>::Type* ToHost(const Headless* entity) noexcept
{
  return reinterpret_cast<const typename HostSide<Headless>::Type*>(entity);
}

}  // namespace q7z
