// The hooks of the framework for the benchmarks that link the plug-in's logic. In the module they are exported by
// plugin/module/main.cpp.

#include "plugin/module/hostservices.h"

extern "C"
{
constinit q7z::TarnoHook g_tarno;
q7z::YieldFunction g_CpuYieldDelegate = nullptr;
}
