#include "plugin/export/hostwalk.h"

#include <utility>

#include "framework/basearray.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

/// Objects that one job visits.
constexpr Int kGrain = 16;

using Level = BaseArray<HostObject*>;

Result<void> AppendSiblings(HostObject* first, Level& level) noexcept
{
  for (HostObject* op = first; op; op = op->GetNext())
    RETURN_IF_ERROR(level.Append(op));
  return {};
}

Result<void> VisitRange(const Level& level, Int first, Int end, HostVisitor& visit) noexcept
{
  for (Int i = first; i < end; ++i)
    RETURN_IF_ERROR(visit.Visit(level[i]));
  return {};
}

/// A level that makes up one chunk is visited here: deep hierarchies have many of them.
Result<void> VisitLevel(const Level& level, HostVisitor& visit, Bool sequential) noexcept
{
  HostJobs* const jobs = sequential || level.GetCount() <= kGrain ? nullptr : FindService<HostJobs>();
  if (!jobs)
    return VisitRange(level, 0, level.GetCount(), visit);
  auto visitChunk = [&level, &visit](Int first, Int end) { return VisitRange(level, first, end, visit); };
  return ParallelFor(*jobs, level.GetCount(), kGrain, visitChunk);
}

HostObject* FindDeepestFirst(HostObject* op) noexcept
{
  while (HostObject* const child = op->GetDown())
    op = child;
  return op;
}

}  // namespace

Result<void> HostWalk(HostDocument* doc, HostVisitor& visit, Bool sequential, HostWalkFilter filter) noexcept
{
  Level level;
  Level next;
  RETURN_IF_ERROR(AppendSiblings(doc->GetFirstObject(), level));
  while (level.IsPopulated())
  {
    RETURN_IF_ERROR(VisitLevel(level, visit, sequential));
    next.Truncate(0);
    for (HostObject* const op : level)
    {
      if (!filter(op))
        RETURN_IF_ERROR(AppendSiblings(op->GetDown(), next));
    }
    std::swap(level, next);
  }
  return {};
}

HostObject* FindFirstInPostOrder(HostObject* first) noexcept
{
  return first ? FindDeepestFirst(first) : nullptr;
}

HostObject* FindNextInPostOrder(HostObject* op) noexcept
{
  HostObject* const next = op->GetNext();
  return next ? FindDeepestFirst(next) : op->GetUp();
}

HostObject* FindNextInTree(HostObject* op, const HostObject* root) noexcept
{
  if (HostObject* const child = op->GetDown())
    return child;
  for (; op && op != root; op = op->GetUp())
  {
    if (HostObject* const next = op->GetNext())
      return next;
  }
  return nullptr;
}

Int32 CountTree(HostObject* root) noexcept
{
  Int32 count = 0;
  for (HostObject* op = root; op; op = FindNextInTree(op, root))
    ++count;
  return count;
}

Int32 CountObjects(HostDocument* doc) noexcept
{
  Int32 count = 0;
  for (HostObject* op = doc->GetFirstObject(); op; op = FindNextInTree(op, nullptr))
    ++count;
  return count;
}

}  // namespace q7z
