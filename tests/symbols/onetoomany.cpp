// A library with a fourth exported name, to see that the test of the exports can fail.
#ifdef _WIN32
#define Q7Z_EXPORT extern "C" __declspec(dllexport)
#else
#define Q7Z_EXPORT extern "C" __attribute__((visibility("default")))
#endif

Q7Z_EXPORT int g_CpuYieldDelegate;
Q7Z_EXPORT int g_tarno;
Q7Z_EXPORT int q7z_main;
Q7Z_EXPORT int q7z_other;
int g_CpuYieldDelegate, g_tarno, q7z_main, q7z_other;
