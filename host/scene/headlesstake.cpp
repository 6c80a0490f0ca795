#include "host/scene/headlesstake.h"

#include <new>

namespace q7z
{

HeadlessDocument* HeadlessOverride::GetDocument() const noexcept
{
  return _take->GetDocument();
}

void HeadlessOverride::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  HeadlessNode::VisitLinks(visit, context);
  visit(context, _target);
}

void HeadlessOverride::Destroy() noexcept
{
  // An override goes with its take.
  CountMistake(GetSceneDiagnostics().freedWhileInserted);
}

HeadlessTake::~HeadlessTake()
{
  for (HeadlessOverride* const over : _overrides)
    delete over;
}

void HeadlessTake::Destroy() noexcept
{
  // A take goes with its document.
  CountMistake(GetSceneDiagnostics().freedWhileInserted);
}

HeadlessOverride* HeadlessTake::FindOverride(const HeadlessNode* target) const noexcept
{
  HeadlessOverride* const* const found = _byTarget.Find(target);
  return found && (*found)->GetTarget() == target ? *found : nullptr;
}

HeadlessOverride* HeadlessTake::AddOverride(HeadlessNamedNode* target) noexcept
{
  std::unique_ptr<HeadlessOverride> over(new (std::nothrow) HeadlessOverride(this));
  if (!over || !over->_target.Set(target) || _overrides.Append(over.get()).HasError())
    return nullptr;
  if (_byTarget.Set(target, over.get()).HasError())
  {
    _overrides.Truncate(_overrides.GetCount() - 1);
    return nullptr;
  }
  return over.release();
}

HeadlessOverride* HeadlessTake::FindOrAddOverride(HeadlessNode* target) noexcept
{
  HeadlessNamedNode* const node = target && !_isMain ? target->AsLinkTarget() : nullptr;
  if (!node)
    return nullptr;
  HeadlessOverride* const found = FindOverride(node);
  return found ? found : AddOverride(node);
}

HeadlessOverride* HeadlessTake::FindOrAddOverride(HeadlessNode* target, const HostDescId& id, const HostValue& value) noexcept
{
  HeadlessOverride* const over = FindOrAddOverride(target);
  if (!over)
    return nullptr;
  HeadlessContainer& values = over->GetParameters();
  const Bool isThere = values.Find(id) != nullptr;
  return isThere || values.Set(id, value) ? over : nullptr;
}

Bool HeadlessTake::CopyFrom(const HeadlessTake& other) noexcept
{
  if (!CopyCommonFrom(other))
    return false;
  for (const HeadlessOverride* source : other._overrides)
  {
    std::unique_ptr<HeadlessOverride> over(new (std::nothrow) HeadlessOverride(this));
    if (!over || !over->CopyCommonFrom(*source) || _overrides.Append(over.get()).HasError())
      return false;
    over->_target = source->_target;
    static_cast<void>(over.release());  // the list owns it
  }
  return RefreshTargets();
}

Bool HeadlessTake::RefreshTargets() noexcept
{
  _byTarget.Reset();
  for (HeadlessOverride* const over : _overrides)
  {
    if (over->GetTarget() && _byTarget.Set(over->GetTarget(), over).HasError())
      return false;
  }
  return true;
}

HeadlessTakeData::~HeadlessTakeData()
{
  for (HeadlessTake* const take : _takes)
    delete take;
}

Bool HeadlessTakeData::Init(HeadlessDocument* document) noexcept
{
  _document = document;
  std::unique_ptr<HeadlessTake> take(new (std::nothrow) HeadlessTake(document, true));
  if (!take || !take->SetName("Main"_s) || _takes.Append(take.get()).HasError())
    return false;
  _current = take.release();
  return true;
}

void HeadlessTakeData::SetCurrentTake(HeadlessTake* take) noexcept
{
  if (take && take->GetDocument() == _document)
    _current = take;
}

HeadlessTake* HeadlessTakeData::AddTake(const String& name) noexcept
{
  std::unique_ptr<HeadlessTake> take(new (std::nothrow) HeadlessTake(_document, false));
  if (!take || !take->SetName(name) || _takes.Append(take.get()).HasError())
    return nullptr;
  return take.release();
}

Bool HeadlessTakeData::CopyFrom(const HeadlessTakeData& other) noexcept
{
  for (Int i = 0; i < other.GetTakeCount(); ++i)
  {
    HeadlessTake* const take = i == 0 ? GetMainTake() : AddTake(String());
    if (!take || !take->CopyFrom(*other.GetTake(i)))
      return false;
    if (other.GetTake(i) == other.GetCurrentTake())
      _current = take;
  }
  return true;
}

}  // namespace q7z
