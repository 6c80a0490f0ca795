// The entry of the built module: every message, in and out of order, against a host that records; and configuration variables.

#include <map>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/platform/platform.h"
#include "plugin/module/configvariables.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// A host of the smallest kind: three tables that record what is asked of them, and pointers that nothing may follow for the rest.

class RecordingRegistration final : public HostRegistrationTable
{
public:
  Bool RegisterDescription(Int32 id, const String& description) noexcept override
  {
    calls.push_back("description " + std::to_string(id) + " " + Text(description));
    return Answer();
  }
  Bool RegisterPlugin(const HostPluginRecord& record) noexcept override
  {
    calls.push_back("plugin " + std::to_string(record.kind) + " " + std::to_string(record.id) + " '" + Text(record.name) + "' " +
                    std::to_string(record.infoFlags) + " '" + Text(record.description) + "' '" + Text(record.suffix) + "'");
    factories.push_back(record.factory);
    return Answer();
  }
  Bool RegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap*, const String& help,
                       HostCommand* command) noexcept override
  {
    calls.push_back("command " + std::to_string(id) + " '" + Text(name) + "' " + std::to_string(info) + " '" + Text(help) + "'");
    const Bool taken = Answer();
    if (taken)
      delete command;  // it is the host's
    return taken;
  }

  std::size_t refusedCall = SIZE_MAX;  // into calls
  std::vector<std::string> calls;
  std::vector<HostPluginFactory> factories;

private:
  Bool Answer() const noexcept { return calls.size() != refusedCall + 1; }
};

class RecordingResources final : public HostResourceTable
{
public:
  Bool Load() noexcept override
  {
    ++loads;
    return !broken;
  }
  String GetString(Int32 number) noexcept override { return number == 10000 ? "the name"_s : "another text"_s; }

  Bool broken = false;
  int loads = 0;
};

class RecordingConsole final : public HostConsoleTable
{
public:
  void Print(const String&) noexcept override {}
  void Diagnostic(HostDiagnosticLevel level, const String& line, const Char* file, Int32 sourceLine) noexcept override
  {
    diagnostics.push_back((level == HostDiagnosticLevel::kCritical ? "critical " : "") + std::string(file) + ":" +
                          std::to_string(sourceLine) + " " + Text(line) + " ");
  }

  std::vector<std::string> diagnostics;
};

struct FakeHost
{
  FakeHost() noexcept
  {
    tables.version = kMinimumHostVersion;
    void** const pointers = reinterpret_cast<void**>(&tables);
    for (int i = 1; i <= kHostTableCount; ++i)
      pointers[i] = this;
    tables.registration = &registration;
    tables.resource = &resources;
    tables.console = &console;
  }

  RecordingRegistration registration;
  RecordingResources resources;
  RecordingConsole console;
  HostTables tables;
};

/// The built module, reached through its exported names alone. Each is a library of its own with fresh state, since it is loaded from
/// a copy of the file.
class LoadedModule
{
public:
  LoadedModule()
  {
    const std::string name = std::string("io_gltf") + kLibrarySuffix;
    std::filesystem::copy_file(std::filesystem::path(Q7Z_TEST_BIN_DIR) / name, _folder / name);
    const std::string failure = _library.Load(_folder / name);
    if (!failure.empty())
      throw std::runtime_error(failure);
    _entry = reinterpret_cast<HostEntryFunction>(_library.Find("q7z_main"));
    hook = static_cast<TarnoHook*>(_library.Find("g_tarno"));
    yield = static_cast<YieldFunction*>(_library.Find("g_CpuYieldDelegate"));
    if (!_entry || !hook || !yield)
      throw std::runtime_error("the module lacks an export");
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  Int32 Send(Int32 message, const void* argument1 = nullptr, void* argument2 = nullptr, const void* argument3 = nullptr)
  {
    return _entry(message, const_cast<void*>(argument1), argument2, const_cast<void*>(argument3));
  }

  TarnoHook* hook = nullptr;
  YieldFunction* yield = nullptr;

private:
  TestFolder _folder;
  PlatformLibrary _library;
  HostEntryFunction _entry = nullptr;
};

const HostFilename kPath("/plugins/io_gltf.so"_s);

class ModuleEntry : public testing::Test
{
protected:
  Int32 Attach() { return module.Send(kAttachMessage, &host.tables, nullptr, &kPath); }

  FakeHost host;
  LoadedModule module;
};

struct AttachCase
{
  const char* name;
  UInt32 version;
  Bool hasTables;
  Bool hasPath;
  Int32 result;
};
const AttachCase kAttachCases[] = {
  {"OldestAcceptedVersion", 2025100, true, true, 1},
  {"NewerVersion", 2026000, true, true, 1},
  {"VersionJustBelow", 2025099, true, true, -3},
  {"NoPath", 2025100, true, false, -3},
  {"NoTables", 2025100, false, true, -3},
};

class ModuleAttach : public ModuleEntry, public testing::WithParamInterface<AttachCase>
{};

TEST_P(ModuleAttach, AnswersByVersionAndPath)
{
  const AttachCase& row = GetParam();
  host.tables.version = row.version;
  EXPECT_EQ(module.Send(kAttachMessage, row.hasTables ? &host.tables : nullptr, nullptr, row.hasPath ? &kPath : nullptr),
            row.result);
  // Only an attached module has a host to register with; a refused one does not touch its tables.
  EXPECT_EQ(module.Send(kStartMessage), row.result == 1 ? 1 : 0);
  EXPECT_EQ(host.registration.calls.empty(), row.result != 1);
  EXPECT_THAT(host.console.diagnostics, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, ModuleAttach, testing::ValuesIn(kAttachCases), RowName());

#ifndef _WIN32  // a DLL takes its memory past the test's operator new
TEST_F(ModuleEntry, StaysAttachedWithoutMemoryForItsPath)
{
  FailAllocation(1);
  EXPECT_EQ(Attach(), 1);
  EXPECT_EQ(StopFailingAllocations(), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
}
#endif

TEST_F(ModuleEntry, SecondAttachOnlyCountsAndTheLastEndDetaches)
{
  ASSERT_EQ(Attach(), 1);
  FakeHost other;
  other.tables.version = 0;
  EXPECT_EQ(module.Send(kAttachMessage, &other.tables, nullptr, &kPath), 1);
  EXPECT_EQ(module.Send(kAttachMessage, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_THAT(other.registration.calls, IsEmpty());
  EXPECT_FALSE(host.registration.calls.empty());
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kStartMessage), 0);

  FakeHost next;
  EXPECT_EQ(module.Send(kAttachMessage, &next.tables, nullptr, &kPath), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_FALSE(next.registration.calls.empty());
}

TEST_F(ModuleEntry, RefusedAttachCountsToo)
{
  EXPECT_EQ(module.Send(kAttachMessage, &host.tables, nullptr, nullptr), -3);
  EXPECT_EQ(Attach(), 1);  // a second attach, so nothing is read
  EXPECT_EQ(module.Send(kStartMessage), 0);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(Attach(), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
}

TEST_F(ModuleEntry, LoadsResourcesOnSubMessageOneAlone)
{
  HostResourceRecord record{&host};
  const auto load = [&](Int subMessage) { return module.Send(kResourceMessage, reinterpret_cast<void*>(subMessage), &record); };
  EXPECT_EQ(load(1), -1) << "before it is attached";
  ASSERT_EQ(Attach(), 1);
  host.resources.broken = true;
  EXPECT_EQ(load(1), -1);
  EXPECT_EQ(host.resources.loads, 1);
  for (const Int subMessage : {Int(0), Int(2), Int(-1), Int(1) << 32})
    EXPECT_EQ(load(subMessage), 1) << subMessage;
  EXPECT_EQ(record.pointer, &host);
  EXPECT_EQ(host.resources.loads, 1);
  host.resources.broken = false;
  EXPECT_EQ(load(1), 1);
  EXPECT_EQ(record.pointer, nullptr);
}

TEST_F(ModuleEntry, AnswersOtherMessages)
{
  EXPECT_EQ(module.Send(kVersionMessage), 5);
  ASSERT_EQ(Attach(), 1);
  EXPECT_EQ(module.Send(kVersionMessage), 5);
  for (const Int32 message : {0, 5, 7, -1, 180420109})
    EXPECT_EQ(module.Send(message, &host.tables, nullptr, &kPath), -1) << message;
}

TEST_F(ModuleEntry, OffersItsHookBeforeTheFirstMessage)
{
  EXPECT_EQ(Text(module.hook->moduleId), "net.tarno.q7z.io_gltf");
  ASSERT_NE(module.hook->component, nullptr);
  EXPECT_EQ(Text(module.hook->component->id), "net.tarno.q7z.gltf");
  EXPECT_EQ(Text(module.hook->component->registryId), "net.tarno.registry.replacemodule");
  EXPECT_THAT(Text(module.hook->component->sourceFile), HasSubstr("main"));
  EXPECT_EQ(*module.yield, nullptr);
  std::map<std::string, std::string> variables;
  for (Int32 i = 0; i < module.hook->configVariableCount; ++i)
  {
    const ConfigVariableEntry& entry = module.hook->configVariables[i];
    variables[Text(entry.name)] = Text(entry.help);
    EXPECT_EQ(entry.typeCode, 1);
    EXPECT_EQ(entry.word, 0u);
    EXPECT_FALSE(*entry.variable);
  }
  const std::map<std::string, std::string> expected = {
    {"g_gltfImporterNoSkin", "Disables skin creation on glTF import"},
    {"g_gltfImporterBakeSplineInterpolatedAnimation",
     "Bake glTF animation track values into linear interpolation keyframes rather than using Q7Z spline interpolated keyframes"},
  };
  EXPECT_EQ(variables, expected);
}

TEST(ConfigVariables, TableEndsAtTwoHundredFiftySix)
{
  // Entries stay for the life of the process, and so do the variables that they point at.
  static Bool variables[256] = {};
  Int32 next = 0;
  while (g_tarno.configVariableCount < 256)
  {
    ASSERT_LT(next, 256);
    ASSERT_TRUE(RegisterConfigVariable(&variables[next], "filler"_s, "help"_s, true));
    ++next;
  }
  const ConfigVariableEntry& last = g_tarno.configVariables[255];
  EXPECT_FALSE(variables[0]);  // inside the table the caller stores the default itself
  Bool beyond = false;
  EXPECT_TRUE(RegisterConfigVariable(&beyond, "beyond"_s, "help"_s, true));
  EXPECT_TRUE(beyond);
  EXPECT_EQ(g_tarno.configVariableCount, 256);
  EXPECT_EQ(last.variable, &variables[next - 1]);
  EXPECT_EQ(Text(last.name), "filler");
}

// What start asks of the host, in order; an entry for each call.
const std::vector<std::string> kRegistrations = {
  "description 1041129 Fgltfexporter",
  "plugin 16 1041129 'the name' 1048576 'Fgltfexporter' 'gltf'",
  "description 1060210 fgltfimporter",
  "plugin 15 1060210 'the name' 54525952 'fgltfimporter' ''",
  "command 1063930 'glTF Extensions Hasher' 0 ''",
};

TEST_F(ModuleEntry, RegistersInOrderUpToTheFirstRefusal)
{
  for (size_t refused = 0; refused <= kRegistrations.size(); ++refused)
  {
    ASSERT_EQ(Attach(), 1);
    host.registration.calls.clear();
    host.registration.refusedCall = refused;
    EXPECT_EQ(module.Send(kStartMessage), refused == kRegistrations.size() ? 1 : 0) << refused;
    const size_t count = std::min(refused + 1, kRegistrations.size());
    EXPECT_EQ(host.registration.calls, std::vector<std::string>(kRegistrations.begin(), kRegistrations.begin() + count));
    EXPECT_EQ(module.Send(kEndMessage), 1);
  }
  for (const HostPluginFactory factory : host.registration.factories)
    EXPECT_NE(std::unique_ptr<HostPluginInstance>(factory()), nullptr);
}

// The names of the members of HostTables, in their order.
const char* const kTableNames[] = {"registration", "resource",  "description", "document",  "node",      "object",
                                   "hierarchy",    "transform", "visibility",  "parameter", "container", "unit",
                                   "instance",     "modeling",  "alias",       "polygon",   "phong",     "tag",
                                   "normal",       "uvw",       "vertexColor", "selection", "neighbor",  "weight",
                                   "poseMorph",    "texture",   "nodeMaster",  "track",     "curve",     "key",
                                   "take",         "layer",     "material",    "bitmap",    "file",      "dialog",
                                   "console"};
static_assert(std::size(kTableNames) == kHostTableCount);

class ModuleTables : public ModuleEntry, public testing::WithParamInterface<int>
{};

TEST_P(ModuleTables, AttachGoesOnWithoutOne)
{
  const int missing = GetParam();
  reinterpret_cast<void**>(&host.tables)[1 + missing] = nullptr;
  EXPECT_EQ(Attach(), 1);
  if (kTableNames[missing] == std::string("console"))
    return;  // nothing left to print with
  ASSERT_EQ(host.console.diagnostics.size(), 1u);
  const std::string& line = host.console.diagnostics[0];
  EXPECT_THAT(line, AllOf(StartsWith("critical "), HasSubstr("operatingsystem"), HasSubstr(":135 ")));
  for (const char* name : kTableNames)
    EXPECT_THAT(line, HasSubstr(" " + std::string(name) + " "));
}

INSTANTIATE_TEST_SUITE_P(EveryTable, ModuleTables, testing::Range(0, kHostTableCount),
                         [](const auto& row) { return kTableNames[row.param]; });

}  // namespace
}  // namespace q7z::test
