#include "plugin/export/gltfexport.h"

#include <new>

#include "framework/check.h"
#include "plugin/export/gltfexporter.h"
#include "plugin/export/gltfexportparameters.h"
#include "plugin/export/gltfprogress.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"

namespace q7z
{

namespace
{

constexpr Int32 kSaved = 0;
constexpr Int32 kCancelled = -8;

/// The host's status for an error; none means failed, too.
Int32 GetSaveStatus(const Error& error) noexcept
{
  if (!error)
    return -100;
  switch (error.GetClass())
  {
    case ErrorClass::kIllegalState:
    case ErrorClass::kIllegalArgument: return -6;
    case ErrorClass::kOutOfMemory: return -7;
    case ErrorClass::kOperationCancelled: return kCancelled;
    default: return -100;
  }
}

/// One save from the clone of the document to the closed file.
Result<void> WriteDocument(HostNode* node, const HostFilename& name, HostDocument* document) noexcept
{
  const ExportOptions options = ReadExportOptions(*node->GetContainer());
  ASSIGN_OR_RETURN(const std::unique_ptr<GLTFExporter> exporter, GLTFExporter::Create(document, name, options));
  RETURN_IF_ERROR(ProgressCheckCancel());
  RETURN_IF_ERROR(exporter->SetupMaterialExchange());
  RETURN_IF_ERROR(exporter->WriteScene());
  RETURN_IF_ERROR(ProgressCheckCancel());
  ProgressSetText(kWritingFileText);
  return options.IsGlb() ? exporter->WriteGlb() : exporter->WriteGltf();
}

Int32 ExportDocument(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags) noexcept
{
  if (!(flags & kSaveObjects))
    return kSaved;
  const Result<void> written = WriteDocument(node, name, document);
  ProgressClearCancelled();
  if (!written.HasError())
    return kSaved;
  PrintError("The file could not be saved"_s, written.GetError());
  return GetSaveStatus(written.GetError());
}

/// A save that runs on the worker thread of a progress dialog.
class ExportDialog final : public HostWorkerClient, public ProgressDialog
{
public:
  using Work = Int32 (*)(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags);

  ExportDialog(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags, Work work) noexcept
      : _node(node), _name(name), _document(document), _flags(flags), _work(work)
  {}

  /// @return the save's status; 0 when the dialog could not be set up, and nothing was written.
  Int32 Open() noexcept
  {
    Int32 result = kSaved;
    return g_hostTables->dialog->RunWorkerDialog(this, &result) ? result : kSaved;
  }

  Int32 Run() noexcept override
  {
    _isRunning = true;
    const Int32 result = _work(_node, _name, _document, _flags);
    _isRunning = false;
    return result;
  }

  String GetStatusText() noexcept override
  {
    const SpinLockGuard guard(_lock);
    return _statusText.IsPopulated() ? _statusText : HostLoadString(kIdleText);
  }

  void SetStatusText(const String& text) noexcept override
  {
    const SpinLockGuard guard(_lock);
    _statusText = text;
  }
  void SetProgress(Float value) noexcept override { g_hostTables->dialog->SetWorkerProgress(value); }
  Bool IsCancelled() noexcept override { return _isRunning && g_hostTables->dialog->IsWorkerCancelled(); }

private:
  HostNode* _node;
  const HostFilename& _name;
  HostDocument* _document;
  Int32 _flags;
  Work _work;
  SpinLock _lock;
  String _statusText;       // set by the worker, shown by the dialog's thread: under _lock
  Bool _isRunning = false;  // written and read by the worker alone, which hands it on to its own jobs
};

Int32 SaveWithDialog(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags) noexcept
{
  ExportDialog dialog(node, name, document, flags, &ExportDocument);
  ProgressBegin(&dialog);
  HostBeginBackgroundWork(0);
  const Int32 result = dialog.Open();
  ProgressDetach();
  return result;
}

Result<void> LoadParameterDescription(HostNode* node, HostDescription* description) noexcept
{
  CHECK_STATE(node && description);
  CHECK_STATE(description->LoadDescription(1041129));
  return {};
}

}  // namespace

HostPluginInstance* MakeGltfSceneSaver()
{
  return new (std::nothrow) GltfSceneSaver;
}

Bool GltfSceneSaver::Init(HostNode* node) noexcept
{
  return WriteExportDefaults(*node->GetContainer());
}

Bool GltfSceneSaver::GetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept
{
  const Result<void> loaded = LoadParameterDescription(node, description);
  if (loaded.HasError())
  {
    PrintError("The export parameters have no description"_s, loaded.GetError());
    return false;
  }
  flags |= kDescriptionLoaded;
  return g_hostTables->description->BaseGetDescription(node, description, flags);
}

Bool GltfSceneSaver::GetEnabling(HostNode* node, const HostDescId& id) noexcept
{
  return IsExportParameterEnabled(*node->GetContainer(), id[0].id);
}

// The suffix follows the chosen form, and so do the bytes: the name that the file finally gets decides nothing.
Bool GltfSceneSaver::Message(HostNode* node, Int32 message, void* data) noexcept
{
  if (message != kSuffixMessage || !data)
    return true;
  HostSuffixRecord& record = *static_cast<HostSuffixRecord*>(data);
  if (record.suffix)
    *record.suffix = node->GetContainer()->GetInt32(kFileFormatParameter, kGltfFormat) == kGlbFormat ? "glb"_s : "gltf"_s;
  record.isAnswered = 1;
  return true;
}

Int32 GltfSceneSaver::Save(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags) noexcept
{
  const Bool showsDialog = HostMayShowDialog() && (flags & kSaveDialogsAllowed) != 0;
  const Int32 result = showsDialog ? SaveWithDialog(node, name, document, flags) : ExportDocument(node, name, document, flags);
  HostEndBackgroundWork();
  return result;
}

}  // namespace q7z
