#pragma once

// What a load needs of a host, in its smallest form: files in memory, the few services, texts, and a job that keeps a log. Each
// part can be made to fail. While a DocumentHost lives, the plug-in's code calls it.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework/check.h"
#include "host/services/base64.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfparse.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostfile.h"
#include "plugin/module/hostservices.h"
#include "tests/document/testjson.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

/// Files by their path. The bytes of an open file stand in a block of exactly their size.
class MemoryFiles final : public HostFileTable
{
public:
  struct File final : HostFile
  {
    std::unique_ptr<Byte[]> bytes;
    Int size = 0;
    Int position = 0;
    std::string written;  // the path of a file that is written
  };

  HostFile* Alloc() noexcept override
  {
    if (refuseAlloc)
      return nullptr;
    ++liveFiles;
    return new File();
  }
  void Free(HostFile* file) noexcept override
  {
    --liveFiles;
    delete static_cast<File*>(file);
  }
  Bool Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG, BYTEORDER, UInt32, UInt32) noexcept override
  {
    if (mode == FILEOPEN::WRITE && !refuseOpen)
    {
      static_cast<File&>(*file).written = Text(name.GetPath());
      contents[Text(name.GetPath())].clear();
      return true;
    }
    const auto found = contents.find(Text(name.GetPath()));
    if (found == contents.end() || refuseOpen)
      return false;
    File& target = static_cast<File&>(*file);
    target.size = static_cast<Int>(found->second.size());
    target.bytes.reset(new Byte[found->second.size()]);
    std::copy(found->second.begin(), found->second.end(), target.bytes.get());
    return true;
  }
  Bool Close(HostFile*) noexcept override { return !failClose; }
  Bool Seek(HostFile* file, Int distance) noexcept override
  {
    static_cast<File*>(file)->position += distance;
    return seeksUntilFailure-- != 0 && distance >= 0;
  }
  Int GetPosition(const HostFile* file) noexcept override { return static_cast<const File*>(file)->position; }
  Int GetLength(const HostFile* file) noexcept override { return static_cast<const File*>(file)->size; }
  Int ReadBytes(HostFile* file, void* target, Int byteCount) noexcept override
  {
    if (failRead)
      return -1;
    File& source = static_cast<File&>(*file);
    const Int count = std::max(Int(0), std::min({byteCount, source.size - source.position, longestRead}));
    if (count)
      std::memcpy(target, source.bytes.get() + source.position, static_cast<size_t>(count));
    source.position += count;
    return count;
  }
  Bool WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept override
  {
    if (failWrite)
      return false;
    Bytes& target = contents[static_cast<File*>(file)->written];
    target.insert(target.end(), static_cast<const Byte*>(source), static_cast<const Byte*>(source) + byteCount);
    return true;
  }
  Bool ReadUInt32(HostFile* file, UInt32* value) noexcept override { return ReadBytes(file, value, 4) == 4; }
  Bool Exists(const HostFilename& name) noexcept override { return contents.contains(Text(name.GetPath())); }

  std::map<std::string, Bytes> contents;
  Bool refuseAlloc = false;
  Bool refuseOpen = false;
  int seeksUntilFailure = -1;  // never
  Bool failRead = false;
  Bool failWrite = false;
  Bool failClose = false;
  Int longestRead = INT64_MAX;
  int liveFiles = 0;
};

/// The parser of the headless host over the files in memory, with an error of a fixed text.
class TestJson final : public HostJson
{
public:
  explicit TestJson(const MemoryFiles& files) : _files(files) {}
  Result<BaseArray<Data>> ParseFile(const Url& url) noexcept override
  {
    const Bytes& bytes = _files.contents.at(Text(url.GetPath()));
    return Parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  Result<BaseArray<Data>> ParseBytes(BaseArray<Byte> bytes) noexcept override
  {
    return Parse({reinterpret_cast<const char*>(bytes.GetFirst()), static_cast<size_t>(bytes.GetCount())});
  }
  Result<String> Write(const DataDictionary&, Bool) noexcept override { return Error::OutOfMemory(); }

  Bool giveNothing = false;

private:
  Result<BaseArray<Data>> Parse(std::string_view text) const noexcept
  {
    if (giveNothing)
      return BaseArray<Data>();
    Result<BaseArray<Data>> values = ParseText(text);
    if (values.HasError())
      return MAKE_ERROR(ErrorClass::kUnexpected, "no JSON"_s);
    return values;
  }
  const MemoryFiles& _files;
};

/// The decoder of the headless host, with an error of a fixed text.
class TestBase64 final : public HostBase64Decoder
{
public:
  Result<BaseArray<Byte>> Decode(const String& text) noexcept override
  {
    Result<BaseArray<Byte>> bytes = HeadlessBase64Decoder().Decode(text);
    if (bytes.HasError())
      return MAKE_ERROR(ErrorClass::kIllegalArgument, "no base64"_s);
    return bytes;
  }
};

class TestUrls final : public HostUrlService
{
public:
  explicit TestUrls(const MemoryFiles& files) : _files(files) {}
  HostFileSystemType GetType(const Url& url) noexcept override
  {
    if (_files.contents.contains(Text(url.GetPath())))
      return HostFileSystemType::kFile;
    return Text(url.GetPath()) == "/models" ? HostFileSystemType::kFolder : HostFileSystemType::kNone;
  }
  Result<void> Write(const Url&, const Byte*, Int) noexcept override { return Error::OutOfMemory(); }
  Result<void> CreateFolder(const Url&) noexcept override { return Error::OutOfMemory(); }
  Result<Url> GetBaseFolder() noexcept override { return Error::OutOfMemory(); }

private:
  const MemoryFiles& _files;
};

/// A text's hash is the text between brackets.
class TestHash final : public HostHash
{
public:
  Result<String> HashText(const String& text) noexcept override
  {
    if (broken)
      return MAKE_ERROR(ErrorClass::kIo, "no hash"_s);
    return String::Join({"<"_s, text, ">"_s});
  }
  Result<String> HashFile(const Url&) noexcept override { return Error::OutOfMemory(); }

  Bool broken = false;
};

class TestRegistry final : public HostServiceRegistry
{
public:
  void* Find(const Char* id) const noexcept override
  {
    const auto found = services.find(id);
    return found == services.end() ? nullptr : found->second;
  }
  std::map<std::string, void*> services;
};

class TestTexts final : public HostResourceTable
{
public:
  Bool Load() noexcept override { return true; }
  String GetString(Int32 number) noexcept override
  {
    switch (number)
    {
      case 10010: return "This is not supported."_s;
      case 10011: return "Uses @."_s;
      case 10012: return "Requires @."_s;
      case 10013: return "Broken data: @"_s;
      case 10014: return "An asset is missing."_s;
      case 10017: return "Reading"_s;
      default: return String();
    }
  }
};

/// Keeps what it is told, one line for each call, and cancels at the report of a number.
class LogJob final : public HostBackgroundJob
{
public:
  Int32 AddStage(Float weight, const String& title) noexcept override
  {
    log.push_back("stage " + Number(weight) + " " + Text(title));
    return 7;
  }
  void SetProgress(Int32 stage, Float value) noexcept override
  {
    log.push_back("progress " + std::to_string(stage) + " " + Number(value));
    ++reports;
  }
  Bool IsCancelled() noexcept override { return reports == cancelAt; }
  void AddMessage(HostMessageClass messageClass, const String& text) noexcept override
  {
    const std::string line = std::to_string(static_cast<int>(messageClass)) + " " + Text(text);
    log.push_back(line);
    messages.push_back(line);
  }

  std::vector<std::string> log;
  std::vector<std::string> messages;  // "<class> <text>"
  int reports = 0;
  int cancelAt = -1;

private:
  static std::string Number(Float value) { return Text(String::FromFloat(value).GetValue()); }
};

/// What developers would read.
class DocumentConsole final : public HostConsoleTable
{
public:
  void Print(const String&) noexcept override {}
  void Diagnostic(HostDiagnosticLevel, const String& line, const Char*, Int32) noexcept override { lines.push_back(Text(line)); }
  std::vector<std::string> lines;
};

class DocumentHost
{
public:
  DocumentHost() : json(files), urls(files)
  {
    _tables.version = kMinimumHostVersion;
    _tables.file = &files;
    _tables.resource = &texts;
    _tables.console = &console;
    Offer<HostJson>(&json);
    Offer<HostBase64Decoder>(&base64);
    Offer<HostBase64Encoder>(&encoder);
    Offer<HostUrlPathDecoder>(&pathDecoder);
    Offer<HostUrlService>(&urls);
    Offer<HostHash>(&hash);
    g_hostTables = &_tables;
    g_tarno.services = &registry;
  }
  ~DocumentHost()
  {
    g_hostTables = nullptr;
    g_tarno.services = nullptr;
  }
  DocumentHost(const DocumentHost&) = delete;
  DocumentHost& operator=(const DocumentHost&) = delete;

  template <typename Service>
  void Withdraw()
  {
    registry.services.erase(Service::kId);
  }

  MemoryFiles files;
  TestTexts texts;
  DocumentConsole console;
  TestJson json;
  TestBase64 base64;
  HeadlessBase64Encoder encoder;
  HeadlessUrlPathDecoder pathDecoder;
  TestUrls urls;
  TestHash hash;
  TestRegistry registry;

private:
  template <typename Service>
  void Offer(Service* service)
  {
    registry.services[Service::kId] = service;
  }
  HostTables _tables;
};

inline Url PathUrl(std::string_view path)
{
  return Url::FromPath(String::Create(path).GetValue()).GetValue();
}

/// One load of a file in memory by the parser, with everything that it leaves behind.
class DocumentLoad
{
public:
  explicit DocumentLoad(Bool isGlb = false, std::string_view path = "/models/a.gltf") : load(PathUrl(path), isGlb, &job) {}
  static DocumentLoad Glb() { return DocumentLoad(true, "/models/a.glb"); }

  /// @return the error's message; empty for success.
  std::string Run()
  {
    GltfParser parser;
    Result<void> result = parser.Init(&load, load.GetFileUrl());
    if (!result.HasError())
      result = parser.Load(&job);
    error = result.GetError();
    return ErrorText(result);
  }
  std::string RunText(DocumentHost& host, std::string_view text)
  {
    host.files.contents[Text(load.GetFileUrl().GetPath())] = ToBytes(text);
    return Run();
  }
  std::string RunBytes(DocumentHost& host, const Bytes& bytes)
  {
    host.files.contents[Text(load.GetFileUrl().GetPath())] = bytes;
    return Run();
  }

  GltfData& GetData() { return load.GetGltfData(); }

  LogJob job;
  GltfLoad load;
  Error error;  // of the last run
};

}  // namespace q7z::test
