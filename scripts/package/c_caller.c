/* A program with Visual Studio's ABI and without a C run-time, linked with the package's lib\msvc: reads the first path
   of a disk of examples/two-node-single-copy.json, through a resource handle of the simulator. The names are declared
   here as the headers do it, because those of Windows are not needed to build the package. Exit code: 0 for "F:\", else
   the number of the step. */
#include <stddef.h>

__declspec(dllimport) void* OpenCluster(const wchar_t* name);
__declspec(dllimport) void* OpenClusterResource(void* cluster, const wchar_t* name);
__declspec(dllimport) _Bool GetDiskLetterFromResource(void* resource, wchar_t* path, unsigned long cchPath);
__declspec(dllimport) void SetVeritasToolRunCallback(void (*callback)(const void* run, void* context), void* context);
__declspec(dllimport) void DebugLogSetSink(void (*sink)(void* context, unsigned level, const char* sourceFile, int line,
                                                        const wchar_t* text),
                                           void* context);
__declspec(dllimport) void ExitProcess(unsigned code);

static int g_logLines;

static void CountLine(void* context, unsigned level, const char* sourceFile, int line, const wchar_t* text) {
    (void)level, (void)sourceFile, (void)line, (void)text;
    ++*(int*)context;
}

static void IgnoreRun(const void* run, void* context) {
    (void)run, (void)context;
}

static unsigned Check(void) {
    wchar_t path[8];
    void* cluster = OpenCluster(0);
    void* disk = cluster ? OpenClusterResource(cluster, L"Disk F: (EXVS-MAIL1)") : 0;
    if (!disk) {
        return 1;
    }
    SetVeritasToolRunCallback(IgnoreRun, 0);
    SetVeritasToolRunCallback(0, 0);
    DebugLogSetSink(CountLine, &g_logLines);
    if (!GetDiskLetterFromResource(disk, path, 8)) {
        return 2;
    }
    DebugLogSetSink(0, 0);
    if (path[0] != L'F' || path[1] != L':' || path[2] != L'\\' || path[3] != L'\0') {
        return 3;
    }
    return g_logLines > 0 ? 0 : 4;
}

void Start(void) {
    ExitProcess(Check());
}
