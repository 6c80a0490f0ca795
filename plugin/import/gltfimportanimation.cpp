// The animations of a load: one goes to the objects themselves, several to a take each.

#include "framework/check.h"
#include "plugin/import/gltfimporter.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

constexpr Int32 kAnimationFailedText = 10020;

}  // namespace

/// The scene built so far stands without them. Only a file over the limit of keys ends the load.
Result<void> GltfImporter::TryLoadAnimations() noexcept
{
  const Result<void> loaded = LoadAnimations();
  if (!loaded.HasError())
    return {};
  if (_animationImporter.IsOverLimit())
    return loaded.GetError();
  PrintError("The animations could not be loaded"_s, loaded.GetError());
  _warnings.Add(HostMessageClass::kWarning, "Couldn't load animations!"_s);
  return {};
}

Result<void> GltfImporter::LoadAnimations() noexcept
{
  const HashMap<Int, GltfAnimation>& animations = _gltfData.animations;
  if (!_options.IsAnimations() || animations.IsEmpty())
    return {};
  RETURN_IF_ERROR(_animationImporter.InitAnimationImporter(_doc, &_gltfData, &_options, &_nodesToObjects));
  HostTakeData* const takeData = _doc->GetTakeData();
  CHECK_STATE(takeData);
  HostTake* const mainTake = takeData->GetMainTake();
  CHECK_STATE(mainTake);
  if (animations.GetCount() == 1)
    return LoadOnlyAnimation(animations.begin()->GetKey(), animations.begin()->GetValue(), mainTake);
  // They stand in the order of their indices.
  for (const auto& entry : animations)
    RETURN_IF_ERROR(LoadIntoTake(entry.GetKey(), entry.GetValue(), takeData));
  takeData->SetCurrentTake(mainTake);
  return {};
}

Result<void> GltfImporter::LoadOnlyAnimation(Int gltfAnimationIdx, const GltfAnimation& animation, HostTake* mainTake) noexcept
{
  if (animation.name.IsPopulated() && !mainTake->SetName(animation.name))
    return Error::OutOfMemory();
  return ImportAnimation(gltfAnimationIdx, animation, nullptr, true);
}

Result<void> GltfImporter::LoadIntoTake(Int gltfAnimationIdx, const GltfAnimation& animation, HostTakeData* takeData) noexcept
{
  ASSIGN_OR_RETURN(const String indexText, String::FromInt(gltfAnimationIdx));
  ASSIGN_OR_RETURN(const String numbered, String::Format("Animation #@"_s, {indexText}));
  HostTake* const take = takeData->AddTake(animation.name.IsPopulated() ? animation.name : numbered);
  CHECK_STATE(take);
  return ImportAnimation(gltfAnimationIdx, animation, take, false);
}

/// One that fails is a warning, and the next one follows.
Result<void> GltfImporter::ImportAnimation(Int gltfAnimationIdx, const GltfAnimation& animation, HostTake* take,
                                           Bool addRestKeys) noexcept
{
  CHECK_ARGUMENT(gltfAnimationIdx > -1);
  const Result<void> imported = _animationImporter.ImportAnimation(animation, take, addRestKeys);
  if (!imported.HasError())
    return {};
  if (_animationImporter.IsOverLimit())
    return imported.GetError();
  PrintError("An animation could not be loaded"_s, imported.GetError());
  ASSIGN_OR_RETURN(const String indexText, String::FromInt(gltfAnimationIdx));
  _warnings.AddResource(HostMessageClass::kWarning, kAnimationFailedText, indexText);
  return {};
}

}  // namespace q7z
