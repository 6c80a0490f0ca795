// The entry of the built module: every message, in and out of order, against a host that records.

#include <unistd.h>

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/module/fakehost.h"
#include "tests/module/loadedmodule.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;

const HostFilename kPath("/plugins/io_gltf.so"_s);

class ModuleEntry : public testing::Test
{
protected:
  Int32 Attach() { return module.Send(kAttachMessage, &host.tables, nullptr, &kPath); }

  FakeHost host;
  LoadedModule module;
};

TEST_F(ModuleEntry, TellsItsInterfaceVersionInEveryState)
{
  EXPECT_EQ(module.Send(kVersionMessage), 5);
  EXPECT_EQ(Attach(), 1);
  EXPECT_EQ(module.Send(kVersionMessage), 5);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kVersionMessage), 5);
}

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
  {"VersionOfZero", 0, true, true, -3},
  {"NoPath", 2025100, true, false, -3},
  {"NoPathAndOldVersion", 2025099, true, false, -3},
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

INSTANTIATE_TEST_SUITE_P(Rows, ModuleAttach, testing::ValuesIn(kAttachCases), [](const auto& row) { return row.param.name; });

TEST_F(ModuleEntry, StaysAttachedWithoutMemoryForItsPath)
{
  FailAllocation(1);
  EXPECT_EQ(Attach(), 1);
  EXPECT_EQ(StopFailingAllocations(), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
}

TEST_F(ModuleEntry, SecondAttachOnlyCounts)
{
  ASSERT_EQ(Attach(), 1);
  FakeHost other;
  other.tables.version = 0;
  EXPECT_EQ(module.Send(kAttachMessage, &other.tables, nullptr, &kPath), 1);
  EXPECT_EQ(module.Send(kAttachMessage, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_THAT(other.registration.calls, IsEmpty());
  EXPECT_FALSE(host.registration.calls.empty());
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

TEST_F(ModuleEntry, LastEndDetaches)
{
  ASSERT_EQ(Attach(), 1);
  ASSERT_EQ(Attach(), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_EQ(module.Send(kEndMessage), 1);
  EXPECT_EQ(module.Send(kStartMessage), 0);

  FakeHost next;
  EXPECT_EQ(module.Send(kAttachMessage, &next.tables, nullptr, &kPath), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_FALSE(next.registration.calls.empty());
}

TEST_F(ModuleEntry, LoadsResourcesOnSubMessageOne)
{
  ASSERT_EQ(Attach(), 1);
  HostResourceRecord record{&host};
  EXPECT_EQ(module.Send(kResourceMessage, reinterpret_cast<void*>(1), &record), 1);
  EXPECT_EQ(record.pointer, nullptr);
  EXPECT_EQ(host.resources.loads, 1);
}

TEST_F(ModuleEntry, ReportsMissingResources)
{
  ASSERT_EQ(Attach(), 1);
  host.resources.broken = true;
  HostResourceRecord record{&host};
  EXPECT_EQ(module.Send(kResourceMessage, reinterpret_cast<void*>(1), &record), -1);
  EXPECT_EQ(record.pointer, &host);
}

TEST_F(ModuleEntry, ReportsMissingResourcesBeforeAttach)
{
  HostResourceRecord record{&host};
  EXPECT_EQ(module.Send(kResourceMessage, reinterpret_cast<void*>(1), &record), -1);
  EXPECT_EQ(record.pointer, &host);
}

TEST_F(ModuleEntry, AnswersOtherSubMessagesWithSuccess)
{
  ASSERT_EQ(Attach(), 1);
  for (const Int subMessage : {Int(0), Int(2), Int(-1), Int(1) << 32})
  {
    HostResourceRecord record{&host};
    EXPECT_EQ(module.Send(kResourceMessage, reinterpret_cast<void*>(subMessage), &record), 1) << subMessage;
    EXPECT_EQ(record.pointer, &host) << subMessage;
  }
  EXPECT_EQ(host.resources.loads, 0);
}

TEST_F(ModuleEntry, AnswersUnknownMessages)
{
  ASSERT_EQ(Attach(), 1);
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
}

// What start asks of the host, in order; an entry for each call.
const std::vector<std::string> kRegistrations = {
  "description 1041129 Fgltfexporter",
  "plugin 16 1041129 'the name' 1048576 'Fgltfexporter' 'gltf'",
  "description 1060210 fgltfimporter",
  "plugin 15 1060210 'the name' 54525952 'fgltfimporter' ''",
  "command 1063930 'glTF Extensions Hasher' 0 ''",
};

TEST_F(ModuleEntry, RegistersInOrder)
{
  ASSERT_EQ(Attach(), 1);
  EXPECT_EQ(module.Send(kStartMessage), 1);
  EXPECT_EQ(host.registration.calls, kRegistrations);
}

struct RefusalCase
{
  const char* name;
  std::size_t refusedCall;  // into kRegistrations
};
const RefusalCase kRefusalCases[] = {{"SaverDescription", 0},
                                     {"Saver", 1},
                                     {"LoaderDescription", 2},
                                     {"Loader", 3},
                                     {"Command", 4}};

class ModuleStart : public ModuleEntry, public testing::WithParamInterface<RefusalCase>
{};

TEST_P(ModuleStart, StopsAtTheFirstRefusal)
{
  ASSERT_EQ(Attach(), 1);
  host.registration.refusedCall = GetParam().refusedCall;
  EXPECT_EQ(module.Send(kStartMessage), 0);
  const auto end = kRegistrations.begin() + static_cast<std::ptrdiff_t>(GetParam().refusedCall) + 1;
  EXPECT_EQ(host.registration.calls, std::vector<std::string>(kRegistrations.begin(), end));
}

INSTANTIATE_TEST_SUITE_P(Rows, ModuleStart, testing::ValuesIn(kRefusalCases), [](const auto& row) { return row.param.name; });

TEST_F(ModuleEntry, FactoriesMakeInstances)
{
  ASSERT_EQ(Attach(), 1);
  ASSERT_EQ(module.Send(kStartMessage), 1);
  for (const HostPluginFactory factory : host.registration.factories)
  {
    const std::unique_ptr<HostPluginInstance> first(factory());
    const std::unique_ptr<HostPluginInstance> second(factory());
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
  }
  EXPECT_EQ(host.registration.factories.size(), 2u);
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
  const RecordingConsole::Line& line = host.console.diagnostics[0];
  EXPECT_EQ(line.level, HostDiagnosticLevel::kCritical);
  EXPECT_THAT(line.file, HasSubstr("operatingsystem"));
  EXPECT_EQ(line.line, 135);
  for (const char* name : kTableNames)
    EXPECT_THAT(line.text, testing::ContainsRegex("(^| )" + std::string(name) + "( |$)"));
}

INSTANTIATE_TEST_SUITE_P(EveryTable, ModuleTables, testing::Range(0, kHostTableCount),
                         [](const auto& row) { return kTableNames[row.param]; });

}  // namespace
}  // namespace q7z::test
