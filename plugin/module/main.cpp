// The three names that the library exports; the entry itself is still to come.
extern "C"
{
__attribute__((visibility("default"))) void* g_CpuYieldDelegate = nullptr;
__attribute__((visibility("default"))) void* g_tarno = nullptr;
__attribute__((visibility("default"))) int q7z_main()
{
  return 0;
}
}
