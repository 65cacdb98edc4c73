// Ends a process in one of the ways a host may end it, given as the argument. Each must end with status 0: the engine
// crashes in its own destructors when it is not shut down, or at the wrong time.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/jsapi.h"

namespace
{

constexpr JSClass kGlobal = {"G", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
int g_expected = 0;
int g_finalized = 0;

constexpr JSClass kCounted = {"Counted", 0,       nullptr, nullptr, nullptr,
                              nullptr,   nullptr, nullptr, nullptr, [](JSContext*, JSObject*) { ++g_finalized; }};

JSContext* Make()
{
    JSContext* cx = JS_NewContext(nullptr, 8192);
    JS_SetGlobalObject(cx, JS_NewGlobal(cx, &kGlobal));
    JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", &kCounted, nullptr, 0);
    ++g_expected;
    jsval v = JSVAL_VOID;
    if (!JS_EvaluateUCScript(cx, nullptr, u"var a = []; for (var i = 0; i < 1000; i++) a.push({}); i", 55, "p", 0,
                             &v) ||
        v != INT_TO_JSVAL(1000))
        std::abort();
    return cx;
}

// A host's static that uses the interface when everything else has gone.
struct LateUser
{
    JSContext* cx = nullptr;
    bool make = false;
    ~LateUser()
    {
        jsval v = JSVAL_VOID;
        JS_SetMisuseHook([](const char*) {});
        if (cx) {
            if (JS_EvaluateUCScript(cx, nullptr, u"1", 1, "p", 0, &v))
                _exit(3);
            JS_DestroyContext(cx);
            if (g_finalized != g_expected)
                _exit(4);
        }
        if (make && JS_NewContext(nullptr, 8192) && cx)
            _exit(5);
    }
};
LateUser g_late;

// Set where the engine of a thread that never ends, or of a script that never returns, is left behind: nothing can free
// it, so the leak check has nothing to say.
bool g_leaves_an_engine = false;

void Nothing() {}
void Destroyed()
{
    JS_DestroyContext(Make());
    if (g_finalized != 1)
        std::exit(6);
}
void Leaked()
{
    Make();
}
void StaticDestroys()
{
    g_late.cx = Make();
    g_late.make = true;
}
void StaticMakesTheFirst()
{
    g_late.make = true;
}
void WorkerDestroyed()
{
    std::thread([] { JS_DestroyContext(Make()); }).join();
}
void WorkerLeaked()
{
    std::thread([] { Make(); }).join();
}
void WorkerStillRunning()
{
    g_leaves_an_engine = true;
    JSContext* volatile made = nullptr;
    std::thread([&made] {
        made = Make();
        for (;;)
            ::pause();
    }).detach();
    while (!made)
        ::usleep(1000);
}
void ExitFromWorker()
{
    g_leaves_an_engine = true;
    Make();
    std::thread([] { std::exit(0); }).join();
}
void ExitFromWorkerWithContext()
{
    g_leaves_an_engine = true;
    Make();
    std::thread([] {
        Make();
        std::exit(0);
    }).join();
}
void ExitInsideANative()
{
    g_leaves_an_engine = true;
    JSContext* cx = Make();
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "quit",
        [](JSContext*, JSObject*, uintN, jsval*, jsval*) -> JSBool { std::exit(0); }, 0, 0);
    JS_EvaluateUCScript(cx, nullptr, u"quit()", 6, "p", 0, nullptr);
}
void QuickExit()
{
    Make();
    std::quick_exit(0);
}
void UnderscoreExit()
{
    Make();
    ::_exit(0);
}
void WithWatchdog()
{
    JSContext* cx = Make();
    JS_SetTimeLimit(cx, 5);
    JS_EvaluateUCScript(cx, nullptr, u"for(;;);", 8, "p", 0, nullptr);
    std::thread([] {
        JSContext* worker = Make();
        JS_SetTimeLimit(worker, 5);
        JS_SetMemoryLimit(worker, 1 << 20);
        JS_EvaluateUCScript(worker, nullptr, u"for(;;);", 8, "p", 0, nullptr);
    }).join();
}
void ManyCycles()
{
    for (int i = 0; i < 5; ++i)
        std::thread([] { JS_DestroyContext(Make()); }).join();
    JS_DestroyContext(Make());
    JS_DestroyContext(Make());
}
void ForkedChildExits()
{
    Make();
    const pid_t child = ::fork();
    if (child == 0)
        std::exit(21);
    int status = 1;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 21)
        std::exit(7);
}
void ContextBoundToThread()
{
    thread_local LateUser bound;
    bound.cx = nullptr;
    std::thread([] {
        // Made before the thread's engine, so destroyed after it.
        thread_local LateUser user;
        user.make = true;
        user.cx = Make();
    }).join();
}

// Loads the plugin, uses it, unloads it.
using PluginRun = int (*)();
int RunPlugin(const char* path, bool in_thread)
{
    void* plugin = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!plugin) {
        std::fprintf(stderr, "%s\n", ::dlerror());
        return 8;
    }
    auto run = reinterpret_cast<PluginRun>(::dlsym(plugin, "qxp_probe_run"));
    int result = 9;
    if (in_thread)
        std::thread([&] { result = run(); }).join();
    else
        result = run();
    ::dlclose(plugin);
    return result;
}

} // namespace

extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off()
{
    return g_leaves_an_engine;
}

int main(int argc, char** argv)
{
    const std::map<std::string, void (*)()> ways = {{"nothing", Nothing},
                                                    {"destroyed", Destroyed},
                                                    {"leaked", Leaked},
                                                    {"static_destroys", StaticDestroys},
                                                    {"static_makes_the_first", StaticMakesTheFirst},
                                                    {"worker_destroyed", WorkerDestroyed},
                                                    {"worker_leaked", WorkerLeaked},
                                                    {"worker_still_running", WorkerStillRunning},
                                                    {"exit_from_worker", ExitFromWorker},
                                                    {"exit_from_worker_with_context", ExitFromWorkerWithContext},
                                                    {"exit_inside_a_native", ExitInsideANative},
                                                    {"quick_exit", QuickExit},
                                                    {"underscore_exit", UnderscoreExit},
                                                    {"with_watchdog", WithWatchdog},
                                                    {"many_cycles", ManyCycles},
                                                    {"forked_child_exits", ForkedChildExits},
                                                    {"context_bound_to_thread", ContextBoundToThread}};
    if (argc == 3)
        return RunPlugin(argv[2], std::strcmp(argv[1], "plugin_in_thread") == 0);
    const auto way = ways.find(argc > 1 ? argv[1] : "");
    if (way == ways.end())
        return 2;
    way->second();
    return 0;
}
