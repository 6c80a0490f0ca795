// The names that the library exports: the entry and the two hooks of the framework. Whatever tests link instead of this file
// defines the hooks itself.

#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"
#include "plugin/module/moduleshell.h"

#ifdef _WIN32
#define Q7Z_EXPORT __declspec(dllexport)
#else
#define Q7Z_EXPORT __attribute__((visibility("default")))
#endif

using q7z::operator""_s;

static constinit const q7z::TarnoComponent g_component = {"net.tarno.q7z.gltf"_s, "main"_s, "net.tarno.registry.replacemodule"_s};

extern "C"
{

Q7Z_EXPORT q7z::YieldFunction g_CpuYieldDelegate = nullptr;

// Ready before any initialiser of the library runs: configuration variables register through it.
Q7Z_EXPORT constinit q7z::TarnoHook g_tarno = {nullptr, "net.tarno.q7z.io_gltf"_s, &g_component, nullptr, 0};

Q7Z_EXPORT q7z::Int32 q7z_main(q7z::Int32 message, void* argument1, void* argument2, void* argument3) noexcept
{
  return q7z::AnswerModuleMessage(message, argument1, argument2, argument3);
}

}  // extern "C"
