#pragma once

// The framework API: services that the host registers under ids and the plug-in resolves by them. Every operation that can fail
// returns a Result; none throws. The registry reaches the plug-in through the exported hook g_tarno before the first message.

#include <memory>

#include "framework/basearray.h"
#include "framework/data.h"
#include "framework/hashmap.h"
#include "framework/result.h"
#include "framework/spinlock.h"
#include "framework/url.h"
#include "plugin/module/hostfwd.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

/// Where services are found. The host owns it and everything in it.
class HostServiceRegistry
{
public:
  /// @param id  terminated by a zero. @return the service, or null when the host offers none under that id.
  virtual void* Find(const Char* id) const noexcept = 0;

protected:
  ~HostServiceRegistry() = default;
};

class HostJson
{
public:
  static constexpr const Char* kId = "net.tarno.interface.parserclass.json";

  /// The top-level values of a file, usually one. A byte order mark, or text behind the value, is an error of the class
  /// unexpected; so is nesting deeper than 1,024.
  virtual Result<BaseArray<Data>> ParseFile(const Url& url) noexcept = 0;
  /// The same from memory; takes the bytes over.
  virtual Result<BaseArray<Data>> ParseBytes(BaseArray<Byte> bytes) noexcept = 0;
  /// @param formatted  indented over lines, else compact. Non-finite numbers are an error.
  virtual Result<String> Write(const DataDictionary& dictionary, Bool formatted) noexcept = 0;

protected:
  ~HostJson() = default;
};

class HostBase64Decoder
{
public:
  static constexpr const Char* kId = "net.tarno.streamconversion.base64.decoder";
  /// Standard alphabet with padding; anything else is an error of the class illegal argument that tells the position.
  virtual Result<BaseArray<Byte>> Decode(const String& text) noexcept = 0;

protected:
  ~HostBase64Decoder() = default;
};

class HostBase64Encoder
{
public:
  static constexpr const Char* kId = "net.tarno.streamconversion.base64.encoder";
  /// prefix followed by the encoded bytes.
  virtual Result<String> Encode(const String& prefix, const Byte* bytes, Int byteCount) noexcept = 0;

protected:
  ~HostBase64Encoder() = default;
};

class HostUrlPathDecoder
{
public:
  static constexpr const Char* kId = "net.tarno.stringdecoding.urlpath";
  virtual Result<String> Decode(const String& text) noexcept = 0;  ///< percent codes

protected:
  ~HostUrlPathDecoder() = default;
};

/// What the file system's type query answers.
enum class HostFileSystemType : Int32
{
  kNone = 0,
  kOther = 1,
  kFolder = 2,
  kFile = 3,
};

class HostUrlService
{
public:
  static constexpr const Char* kId = "net.tarno.urlservice";
  virtual HostFileSystemType GetType(const Url& url) noexcept = 0;
  /// Writes a whole file: it appears whole or not at all.
  virtual Result<void> Write(const Url& url, const Byte* bytes, Int byteCount) noexcept = 0;
  virtual Result<void> CreateFolder(const Url& url) noexcept = 0;  ///< with parents; one that is there is fine
  virtual Result<Url> GetBaseFolder() noexcept = 0;                ///< in which `tex` is made

protected:
  ~HostUrlService() = default;
};

class HostHash
{
public:
  static constexpr const Char* kId = "net.tarno.stringhash";
  virtual Result<String> HashText(const String& text) noexcept = 0;
  virtual Result<String> HashFile(const Url& url) noexcept = 0;

protected:
  ~HostHash() = default;
};

/// Classes of a job's message.
enum class HostMessageClass : Int32
{
  kInformation = 4,
  kWarning = 8,
};

/// One load as its user sees it: stages with weights, progress in each, cancellation, messages. Handed over with the file name.
class HostBackgroundJob
{
public:
  /// @param weight  the stage's share of the whole, 0 to 1. @return the stage's number.
  virtual Int32 AddStage(Float weight, const String& title) noexcept = 0;
  /// @param value  0 to 1.
  virtual void SetProgress(Int32 stage, Float value) noexcept = 0;
  virtual Bool IsCancelled() noexcept = 0;
  virtual void AddMessage(HostMessageClass messageClass, const String& text) noexcept = 0;

protected:
  ~HostBackgroundJob() = default;
};

class HostUsageReport
{
public:
  static constexpr const Char* kId = "net.tarno.usagereport";
  virtual Result<void> Send(const String& eventName, const DataDictionary& entries) noexcept = 0;

protected:
  ~HostUsageReport() = default;
};

class HostJobs
{
public:
  static constexpr const Char* kId = "net.tarno.jobs";
  using RangeFunction = Result<void> (*)(void* context, Int first, Int end);
  /// Runs function over [0, count) in ranges of at most grain, on several threads, and waits for all. The first error stops what
  /// has not begun and is the result.
  virtual Result<void> ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept = 0;

protected:
  ~HostJobs() = default;
};

/// Runs body(first, end) over [0, count) in parallel; body returns Result<void>.
template <typename Body>
Result<void> ParallelFor(HostJobs& jobs, Int count, Int grain, Body& body) noexcept
{
  return jobs.ParallelFor(
    count, grain, [](void* context, Int first, Int end) { return (*static_cast<Body*>(context))(first, end); }, &body);
}

/// One texture of an exchange record: where its file lies, or its pixels.
struct HostExchangeTexture
{
  Url url;
  HostImage* buffer = nullptr;  // owned by the host until the record goes
};

/// One constant parameter of an exchange record.
struct HostExchangeParameter
{
  Data value;
  Bool constant = true;
};

/// The host's neutral record of a material.
struct HostMaterialExchangeData
{
  String materialTypeId;
  HashMap<String, HostExchangeParameter> parameters;
  HashMap<String, HostExchangeTexture> textures;
};

class HostMaterialImport
{
public:
  static constexpr const Char* kId = "net.tarno.material.materialimport.nodematerial";
  virtual Result<HostMaterial*> Import(const HostMaterialExchangeData& record, HostDocument* document,
                                       const DataDictionary& context) noexcept = 0;

protected:
  ~HostMaterialImport() = default;
};

class HostMaterialExport
{
public:
  static constexpr const Char* kId = "net.tarno.material.materialexport";
  virtual Result<HostMaterialExchangeData> Save(HostMaterial* material, const DataDictionary& settings) noexcept = 0;

protected:
  ~HostMaterialExport() = default;
};

class HostMediaSessions
{
public:
  static constexpr const Char* kId = "net.tarno.mediasessions";
  static constexpr const Char* kPngExport = "net.tarno.mediasession.png.export";
  static constexpr const Char* kJpegExport = "net.tarno.mediasession.jpg.export";
  /// Encodes an image in memory by the session of an id.
  virtual Result<BaseArray<Byte>> Encode(const Char* sessionId, HostImage* image) noexcept = 0;
  /// A copy of the image in another colour profile; owned by the host until the image goes.
  virtual Result<HostImage*> ConvertColorProfile(HostImage* image, const Char* profileId) noexcept = 0;
  /// A hash of an image's size and pixels, and the bytes of its pixels.
  virtual UInt GetHash(const HostImage* image) noexcept = 0;
  virtual Int GetByteCount(const HostImage* image) noexcept = 0;

protected:
  ~HostMediaSessions() = default;
};

/// A named switch that the user of the host can set from outside the module.
struct ConfigVariableEntry
{
  String name;
  String help;
  Int32 typeCode = 1;  ///< 1 is boolean
  Bool* variable = nullptr;
  UInt32 word = 0;
};

/// What the module offers the framework.
struct TarnoComponent
{
  String id;
  String sourceFile;
  String registryId;
};

/// The hook `g_tarno`: the host puts its registry there before the first message; the module's half stands from static
/// initialisation on.
struct TarnoHook
{
  const HostServiceRegistry* services = nullptr;

  String moduleId;
  const TarnoComponent* component = nullptr;
  const ConfigVariableEntry* configVariables = nullptr;
  Int32 configVariableCount = 0;
};

}  // namespace q7z

extern "C"
{
/// Defined by the module; see TarnoHook.
extern q7z::TarnoHook g_tarno;
/// The host's yield function, called while a spin lock waits; null for none.
extern q7z::YieldFunction g_CpuYieldDelegate;
}

namespace q7z
{

/// The host's service of a class, or null when the host offers none.
template <typename Service>
Service* FindService() noexcept
{
  return g_tarno.services ? static_cast<Service*>(g_tarno.services->Find(Service::kId)) : nullptr;
}

}  // namespace q7z
