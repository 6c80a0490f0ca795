#pragma once

// GltfPreprocessor: turns the exporter's clone of the document into one that the export walk can read as it stands: plain polygon
// objects, nulls, joints and cameras, one material a mesh, animation sampled when asked, hidden things marked and empty ones gone.

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "framework/spinlock.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/export/hostwalk.h"
#include "plugin/export/objectmarkers.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

class GltfPreprocessor
{
public:
  /// @param doc  the clone, changed freely; not owned.
  void SetDocument(HostDocument* doc) noexcept { _doc = doc; }

  /// Prepares the document. @return the number of objects that are left. After an error the document is good for nothing.
  Result<Int32> Run(const ExportOptions& options) noexcept;

private:
  HostDocument* _doc = nullptr;
  ExportOptions _options;
  BaseArray<HostObject*> _instances;
  BaseArray<HostObject*> _splitObjects;
  HashMap<HostObject*, Bool> _morphObjects;  // used as a set
  Int32 _objectCount = 0;
  Bool _sequential = false;  // nothing ever sets it
  SpinLock _lock;
};

}  // namespace q7z
