#pragma once

// The function tables over the scene model. Most keep no state and live to the end of the process; the two that need something of
// the host keep it in a HeadlessSceneState. Modeling, bitmaps, files, dialogs, console, registration, descriptions and resources are
// filled in elsewhere.

#include "host/scene/headlessdocument.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"

namespace q7z
{

struct HeadlessSceneState;

class SceneDocumentTable : public HostDocumentTable
{
public:
  explicit SceneDocumentTable(HeadlessSceneState& state) noexcept : _state(state) {}
  virtual ~SceneDocumentTable() = default;
  HostDocument* Clone(const HostDocument* document, Int32 flags) noexcept override;
  void InsertObject(HostDocument* document, HostObject* object, HostObject* parent, HostObject* predecessor) noexcept override;
  void InsertMaterial(HostDocument* document, HostMaterial* material) noexcept override;
  HostObject* GetFirstObject(const HostDocument* document) noexcept override;
  void SetTime(HostDocument* document, const HostTime& time) noexcept override;
  HostTime GetTime(const HostDocument* document) noexcept override;
  void ExecutePasses(HostDocument* document) noexcept override;
  HostNode* FindSceneHook(const HostDocument* document, Int32 id) noexcept override;
  Bool SendMessage(HostNode* node, Int32 message, void* data) noexcept override;
  HostContainer* GetSettings(HostDocument* document) noexcept override;
  HostContainer* GetActiveRenderData(HostDocument* document) noexcept override;
  String GetActiveNodeSpace() noexcept override;
  HostDocument* GetActiveDocument() noexcept override;

private:
  HeadlessSceneState& _state;
};

class SceneMaterialTable final : public HostMaterialTable
{
public:
  explicit SceneMaterialTable(HeadlessSceneState& state) noexcept : _state(state) {}
  HostMaterial* Alloc(Int32 type) noexcept override;
  Bool IsNodeBased(const HostMaterial* material) noexcept override;
  Bool GetChannelState(const HostMaterial* material, Int32 channel) noexcept override;
  HostShader* GetChannelShader(const HostMaterial* material, Int32 channel) noexcept override;
  Int32 GetReflectanceLayerId(const HostMaterial* material, Int32 index) noexcept override;
  HostShader* GetLayerShader(const HostMaterial* material, Int32 parameter) noexcept override;
  HostFilename ResolveShaderFile(const HostShader* shader, const HostDocument* document) noexcept override;
  HostContainer* GetGlobalSettings() noexcept override;

private:
  HeadlessSceneState& _state;
};

/// What the scene's tables need of the host. Owned by the host; outlives every use of the tables filled with it.
struct HeadlessSceneState
{
  HeadlessDocument* activeDocument = nullptr;  ///< not owned
  /// The id of the active material node space; when empty, that of the active document counts, and without one the default.
  String nodeSpace;
  HeadlessContainer globalSettings;
  HostJobs* jobs = nullptr;  ///< that evaluate many objects; not owned

  SceneDocumentTable documentTable{*this};
  SceneMaterialTable materialTable{*this};

  HeadlessSceneState() noexcept = default;
  HeadlessSceneState(const HeadlessSceneState&) = delete;
  HeadlessSceneState& operator=(const HeadlessSceneState&) = delete;
};

/// Sets the pointers of the tables that the scene implements; the others stay.
void FillSceneTables(HostTables& tables, HeadlessSceneState& state) noexcept;

/// (from in metres) / (to in metres); 1 when either is no usable unit.
Float GetUnitConversionFactor(const HostUnitScale& from, const HostUnitScale& to) noexcept;

}  // namespace q7z
