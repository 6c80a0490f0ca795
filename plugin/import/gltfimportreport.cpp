#include "plugin/import/gltfimportreport.h"

#include "plugin/module/diagnostics.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

namespace
{

constexpr Int32 kLoaderId = 1060210;

constexpr Int32 kUnexpectedErrorText = 10010;
constexpr Int32 kUnknownErrorText = 10021;
constexpr Int32 kOutOfMemoryText = 10022;

// Entries of the event.
inline const DataKey kCommandId("command.id");
inline const DataKey kFileId("file_id");
inline const DataKey kExtension("extension");
inline const DataKey kNodeSpace("nodespace");
inline const DataKey kError("error");
inline const DataKey kGenerator("generator");
inline const DataKey kDetails("details");

String GetFileHash(const Url& url) noexcept
{
  HostHash* const hash = FindService<HostHash>();
  if (!hash || url.IsEmpty())
    return String();
  const Result<String> id = hash->HashFile(url);
  return id.HasError() ? String() : id.GetValue();
}

// The report dictionary as text, completed by what is known at the end.
Result<String> WriteDetails(DataDictionary& report, const String& generator, const String& status) noexcept
{
  RETURN_IF_ERROR(report.Set(kGenerator, generator));
  RETURN_IF_ERROR(report.Set(kError, status));
  HostJson* const json = FindService<HostJson>();
  if (!json)
    return String();
  return json->Write(report, false);
}

Result<void> FillEvent(DataDictionary& event, GltfLoad* load, const HostFilename& name, const String& status) noexcept
{
  DataDictionary report = load ? load->GetReport() : DataDictionary();
  const String generator = load ? load->GetGltfData().generator : String();
  const Result<Url> converted = TarnoConvert(name);
  const Url url = converted.HasError() ? Url() : converted.GetValue();
  const Result<String> details = WriteDetails(report, generator, status);

  RETURN_IF_ERROR(event.Set(kCommandId, kLoaderId));
  RETURN_IF_ERROR(event.Set(kFileId, GetFileHash(url)));
  RETURN_IF_ERROR(event.Set(kExtension, !load ? url.GetSuffix() : load->IsGlb() ? "glb"_s : "gltf"_s));
  RETURN_IF_ERROR(event.Set(kNodeSpace, HostGetActiveNodeSpace()));
  RETURN_IF_ERROR(event.Set(kError, status));
  RETURN_IF_ERROR(event.Set(kGenerator, generator));
  return event.Set(kDetails, details.HasError() ? String() : details.GetValue());
}

}  // namespace

LoadOutcome GetLoadOutcome(const Error& error) noexcept
{
  if (!error)
    return {"none"_s};
  switch (error.GetClass())
  {
    case ErrorClass::kOperationCancelled: return {"user_break"_s, -8};
    case ErrorClass::kIo: return {"io_error"_s, -3};
    case ErrorClass::kOutOfMemory: return {"out_of_memory"_s, 0, kOutOfMemoryText};
    case ErrorClass::kUnexpected: return {"unexpected_error"_s, 0, kUnexpectedErrorText};
    default: return {"unknown_error"_s, 0, kUnknownErrorText};
  }
}

void TellFailure(const Error& error, const LoadOutcome& outcome, Bool dialogsAllowed, String* text) noexcept
{
  PrintError("The load failed"_s, error);
  if (text)
  {
    // A copy of its own: the message may lie in this library, and the host may keep the text longer.
    Result<String> message = error.GetMessage().Trim().Copy();
    *text = message.HasError() ? String() : std::move(message).GetValue();
  }
  if (dialogsAllowed && outcome.textNumber != 0)
    HostShowMessage(HostLoadString(outcome.textNumber));
}

void SendLoadReport(GltfLoad* load, const HostFilename& name, const String& status) noexcept
{
  HostUsageReport* const usageReport = FindService<HostUsageReport>();
  if (!usageReport)
    return;
  DataDictionary event;
  DropError(FillEvent(event, load, name, status));                        // what could be filled is sent
  DropError(usageReport->Send("net.tarno.analytics.exchange"_s, event));  // the load is over, whatever becomes of its report
}

}  // namespace q7z
