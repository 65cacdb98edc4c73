#include <set>

#include "engine_fixture.h"

namespace
{

int g_finalized = 0;
std::multiset<void*> g_finalized_data;

void CountFinalize(JSContext* cx, JSObject* obj)
{
    ++g_finalized;
    g_finalized_data.insert(JS_GetPrivate(cx, obj));
    JS_SetPrivate(cx, obj, nullptr);
}

constexpr JSClass kHost = {"Host",           0,
                           JS_PropertyStub,  JS_PropertyStub,
                           JS_PropertyStub,  JS_PropertyStub,
                           JS_EnumerateStub, JS_ResolveStub,
                           JS_ConvertStub,   CountFinalize};

class EngineGc : public EngineTest
{
protected:
    EngineGc()
    {
        g_finalized = 0;
        g_finalized_data.clear();
    }
    JSObject* NewHost() { return JS_NewObject(cx, &kHost, nullptr, nullptr); }
};

TEST_F(EngineGc, AnObjectNobodyHoldsIsFinalizedOnceWithItsPrivateData)
{
    int data = 0;
    ASSERT_TRUE(JS_SetPrivate(cx, NewHost(), &data));
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 1);
    EXPECT_EQ(g_finalized_data.count(&data), 1u);
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 1);
}

TEST_F(EngineGc, RootsHoldWordsAndBareAddressesOfAnyKind)
{
    JSObject* object = NewHost();
    jsval word = OBJECT_TO_JSVAL(NewHost());
    JSString* string = JS_NewUCStringCopyZ(cx, u"rooted string");
    jsval string_word = STRING_TO_JSVAL(JS_NewUCStringCopyZ(cx, u"rooted word"));
    jsdouble* number = JS_NewDouble(cx, 1.5);
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("(function kept() { return 'kept' })", &v));
    JSFunction* function = JS_ValueToFunction(cx, v);
    jsval nothing = JSVAL_NULL;
    jsval integer = INT_TO_JSVAL(5);
    void* roots[] = {&object, &word, &string, &string_word, &number, &function, &nothing, &integer};
    for (void* root : roots)
        ASSERT_TRUE(JS_AddRoot(cx, root));
    JS_GC(cx);
    ASSERT_TRUE(Run("var a = []; for (var i = 0; i < 100000; i++) a.push({}, 'x' + i); a = null"));
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 0);
    EXPECT_EQ(JS_StringToUtf8(cx, string), "rooted string");
    EXPECT_EQ(ShowWord(string_word), "rooted word");
    EXPECT_EQ(*number, 1.5);
    ASSERT_TRUE(JS_CallFunction(cx, nullptr, function, 0, nullptr, &v));
    EXPECT_EQ(ShowWord(v), "kept");
    for (void* root : roots)
        ASSERT_TRUE(JS_RemoveRoot(cx, root));
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 2);
}

TEST_F(EngineGc, ARootFollowsTheWordAtItsAddress)
{
    jsval word = OBJECT_TO_JSVAL(NewHost());
    ASSERT_TRUE(JS_AddRoot(cx, &word));
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 0);
    word = JSVAL_VOID;
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 1);
    JS_RemoveRoot(cx, &word);
    EXPECT_TRUE(JS_RemoveRoot(cx, &word)) << "removing a root twice is no error";
}

TEST_F(EngineGc, RecentResultsLiveUntilACollectionTheHostAsksFor)
{
    JSObject* object = NewHost();
    for (int i = 0; i < 1000; ++i)
        ASSERT_NE(JS_NewUCStringCopyZ(cx, u"filler"), nullptr);
    JS_MaybeGC(cx);
    EXPECT_EQ(JS_GetPrivate(cx, object), nullptr);
    EXPECT_EQ(g_finalized, 0);
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 1);
}

TEST_F(EngineGc, AnOutermostCallLetsAllButTheNewestResultsGo)
{
    NewHost();
    for (int i = 0; i < 100; ++i)
        JS_NewUCStringCopyZ(cx, u"filler");
    JSObject* newest = NewHost();
    ASSERT_TRUE(Run("1"));
    // A collection of the engine's own accord, as far as results are concerned.
    JS_SetStress(true);
    EXPECT_TRUE(Run("1"));
    JS_SetStress(false);
    EXPECT_EQ(g_finalized, 1);
    EXPECT_EQ(JS_GetPrivate(cx, newest), nullptr);
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 2);
}

TEST_F(EngineGc, ALocalRootScopeKeepsItsResultsThroughCallsAndCollections)
{
    ASSERT_TRUE(JS_EnterLocalRootScope(cx));
    JSObject* array = JS_NewArrayObject(cx, 0, nullptr);
    for (int i = 0; i < 300; ++i) {
        jsval v = OBJECT_TO_JSVAL(NewHost());
        ASSERT_TRUE(Run("1"));
        ASSERT_TRUE(JS_SetElement(cx, array, i, &v));
    }
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 0);
    jsuint length = 0;
    ASSERT_TRUE(JS_GetArrayLength(cx, array, &length));
    EXPECT_EQ(length, 300u);
    JS_LeaveLocalRootScope(cx);
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 300);
}

JSBool CollectInNative(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval* rval)
{
    JSString* made = JS_NewUCStringCopyZ(cx, u"made in the native");
    jsdouble* number = JS_NewDouble(cx, 0.125);
    JS_GC(cx);
    for (int i = 0; i < 1000; ++i)
        JS_NewDouble(cx, i + 0.5);
    JS_GC(cx);
    EXPECT_EQ(JS_StringToUtf8(cx, made), "made in the native");
    EXPECT_EQ(*number, 0.125);
    EXPECT_EQ(argc, 3u);
    EXPECT_EQ(JS_StringToUtf8(cx, JSVAL_TO_STRING(argv[0])), "abc7");
    EXPECT_EQ(*JSVAL_TO_DOUBLE(argv[1]), 7.25);
    EXPECT_EQ(JS_TypeOfValue(cx, argv[2]), JSTYPE_OBJECT);
    EXPECT_EQ(JS_ARGV_THIS(argv), OBJECT_TO_JSVAL(obj));
    *rval = STRING_TO_JSVAL(made);
    return JS_TRUE;
}

TEST_F(EngineGc, ANativesArgumentsAndResultsSurviveCollectionsInIt)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "native", CollectInNative, 3, 0);
    EXPECT_EQ(Show("var n = 7; native('abc' + n, n + 0.25, {})"), "made in the native");
}

JSBool MakeMany(JSContext* cx, JSObject*, uintN, jsval*, jsval*)
{
    for (int i = 0; i < 100; ++i)
        JS_NewObject(cx, &kHost, nullptr, nullptr);
    return JS_TRUE;
}

TEST_F(EngineGc, WhatANativeMadeGoesWhenItHasReturned)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "many", MakeMany, 0, 0);
    JS_SetStress(true);
    EXPECT_TRUE(Run("for (var i = 0; i < 10; i++) many()"));
    JS_SetStress(false);
    EXPECT_EQ(g_finalized, 1000);
}

TEST_F(EngineGc, DestroyingAContextFinalizesAllItsObjectsAndDropsItsRoots)
{
    JSContext* other = NewContext();
    JSObject* rooted = JS_NewObject(other, &kHost, nullptr, nullptr);
    ASSERT_TRUE(JS_AddNamedRoot(other, &rooted, "leftover"));
    JS_DefineObject(other, JS_GetGlobalObject(other), "held", &kHost, nullptr, 0);
    JS_GC(cx);
    EXPECT_EQ(g_finalized, 0);
    JS_DestroyContext(other);
    EXPECT_EQ(g_finalized, 2);
}

TEST_F(EngineGc, AGlobalHasItsFinalizerCalledWhenItIsReplaced)
{
    JSContext* other = NewContext();
    int data = 0;
    for (int i = 0; i < 3; ++i) {
        JSObject* global = JS_NewGlobal(other, &kHost);
        JS_SetGlobalObject(other, global);
        ASSERT_TRUE(JS_SetPrivate(other, global, &data));
        EXPECT_EQ(JS_GetPrivate(other, global), &data);
        JS_GC(other);
        EXPECT_EQ(g_finalized, i);
    }
    JS_DestroyContext(other);
    EXPECT_EQ(g_finalized, 3);
    EXPECT_EQ(g_finalized_data.count(&data), 3u);
}

JSObject* g_watched = nullptr;
bool g_was_about = false;

void AskAboutWatched(JSContext* cx, JSObject*)
{
    g_was_about = JS_IsAboutToBeFinalized(cx, g_watched);
}

TEST_F(EngineGc, WhetherSomethingIsAboutToGoIsAnsweredWithoutTouchingIt)
{
    JSObject* object = NewHost();
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, object)) << "no host root holds it";
    ASSERT_TRUE(JS_AddRoot(cx, &object));
    EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, object));
    EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, JS_GetGlobalObject(cx)));
    JS_RemoveRoot(cx, &object);
    void* address = object;
    JS_GC(cx);
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, address));
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, nullptr));
}

TEST_F(EngineGc, DuringACollectionTheAnswerIsThatCollections)
{
    constexpr JSClass kAsking = {"Asking", 0,       nullptr, nullptr, nullptr,
                                 nullptr,  nullptr, nullptr, nullptr, AskAboutWatched};
    // Held by script only: alive, though no host root has it.
    g_watched = JS_DefineObject(cx, JS_GetGlobalObject(cx), "held", &kHost, nullptr, 0);
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, g_watched));
    g_was_about = true;
    JS_NewObject(cx, &kAsking, nullptr, nullptr);
    JS_GC(cx);
    EXPECT_FALSE(g_was_about);
}

std::vector<std::string> g_order;
JSContext* g_cx = nullptr;

void AtSafePoint(void* data)
{
    g_order.push_back(static_cast<const char*>(data));
    // Everything is allowed here, also a collection.
    EXPECT_NE(JS_NewUCStringCopyZ(g_cx, u"x"), nullptr);
    JS_GC(g_cx);
}

void FinalizeLater(JSContext* cx, JSObject*)
{
    g_order.push_back("finalizer");
    JS_CallAtSafePoint(cx, AtSafePoint, const_cast<char*>("later"));
}

TEST_F(EngineGc, CallsAtTheSafePointComeAfterTheScriptThatCausedThem)
{
    constexpr JSClass kLater = {"Later", 0,       nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, FinalizeLater};
    g_cx = cx;
    g_order.clear();
    JS_CallAtSafePoint(cx, AtSafePoint, const_cast<char*>("at once"));
    EXPECT_EQ(g_order, (std::vector<std::string>{"at once"}));
    g_order.clear();
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "gc",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            JS_GC(c);
            g_order.push_back("native");
            return JS_TRUE;
        },
        0, 0);
    JS_DefineObject(cx, JS_GetGlobalObject(cx), "later", &kLater, nullptr, 0);
    JS_ClearNewbornRoots(cx);
    ASSERT_TRUE(Run("delete this.later; gc()"));
    EXPECT_EQ(g_order, (std::vector<std::string>{"finalizer", "native", "later"}));
}

TEST_F(EngineGc, ARootMayHoldOneThingAfterAnother)
{
    JSObject* first = NewHost();
    JSObject* second = NewHost();
    JSObject* root = first;
    JSObject* other_root = nullptr;
    ASSERT_TRUE(JS_AddRoot(cx, &root));
    ASSERT_TRUE(JS_AddRoot(cx, &other_root));
    for (int i = 0; i < 3; ++i) {
        root = first;
        EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, first));
        EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, second));
        root = second;
        EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, first));
        EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, second));
        other_root = first;
        EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, first));
        other_root = nullptr;
    }
    JS_RemoveRoot(cx, &root);
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, second));
    JS_RemoveRoot(cx, &other_root);
}

TEST_F(EngineGc, AddressesBesideALiveObjectAreNone)
{
    JSObject* object = NewHost();
    ASSERT_TRUE(JS_AddRoot(cx, &object));
    EXPECT_FALSE(JS_IsAboutToBeFinalized(cx, object));
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, reinterpret_cast<char*>(object) + 1));
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, reinterpret_cast<char*>(object) + 8));
    EXPECT_TRUE(JS_IsAboutToBeFinalized(cx, reinterpret_cast<void*>(8)));
    JS_RemoveRoot(cx, &object);
}

void MisbehaveInFinalizer(JSContext* cx, JSObject* obj)
{
    EXPECT_EQ(JS_NewUCStringCopyZ(cx, u"x"), nullptr);
    EXPECT_FALSE(JS_EvaluateUCScript(cx, nullptr, u"1", 1, "f", 0, nullptr));
    jsval v = JSVAL_VOID;
    EXPECT_FALSE(JS_GetProperty(cx, obj, "x", &v));
    JS_GC(cx);
    EXPECT_EQ(JS_GetPrivate(cx, obj), nullptr);
}

TEST_F(EngineGc, WhatAFinalizerMayNotDoIsRefused)
{
    constexpr JSClass kBad = {"Bad",   0,       nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, MisbehaveInFinalizer};
    JS_NewObject(cx, &kBad, nullptr, nullptr);
    JS_GC(cx);
    const std::vector<std::string> misuse = TakeMisuse();
    ASSERT_EQ(misuse.size(), 4u);
    EXPECT_EQ(misuse[0], "JS_NewUCStringCopyN called during a garbage collection; refused");
}

void FinalizeBig(JSContext* cx, JSObject* obj)
{
    ++g_finalized;
    JS_RemoveNativeMemory(cx, obj, 1000000);
}
constexpr JSClass kBig = {"Big", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, FinalizeBig};

TEST_F(EngineGc, NativeMemoryMakesTheCollectorComeInTime)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "big",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            JS_AddNativeMemory(c, JS_NewObject(c, &kBig, nullptr, nullptr), 1000000);
            return JS_TRUE;
        },
        0, 0);
    ASSERT_TRUE(Run("for (var i = 0; i < 1000; i++) big()"));
    EXPECT_GT(g_finalized, 500);
}

TEST_F(EngineGc, ObjectsThatScriptDropsGoWithoutBeingAsked)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "make",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval* rval) {
            *rval = OBJECT_TO_JSVAL(JS_NewObject(c, &kHost, nullptr, nullptr));
            return JS_TRUE;
        },
        0, 0);
    ASSERT_TRUE(Run("for (var i = 0; i < 3000000; i++) make()"));
    EXPECT_GT(g_finalized, 1500000);
    EXPECT_LT(JS_CountHostObjects(), 1500000u);
}

TEST_F(EngineGc, EverythingWorksWithACollectionAtEveryStep)
{
    JS_SetStress(true);
    JSObject* object = JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", &kHost, nullptr, 0);
    jsval v = STRING_TO_JSVAL(JS_NewStringFromWide(cx, L"fresh", 5));
    ASSERT_TRUE(JS_SetProperty(cx, object, "p", &v));
    JS_DefineFunction(cx, object, "native", CollectInNative, 3, 0);
    EXPECT_EQ(Show("var n = 7; o.native('abc' + n, n + 0.25, {}) + o.p"), "made in the nativefresh");
    JSObject* array = JS_NewArrayObject(cx, 0, nullptr);
    for (int i = 0; i < 50; ++i) {
        v = STRING_TO_JSVAL(JS_NewStringFromWide(cx, std::to_wstring(i).c_str(), std::to_wstring(i).size()));
        ASSERT_TRUE(JS_SetElement(cx, array, i, &v));
    }
    v = OBJECT_TO_JSVAL(array);
    EXPECT_EQ(ShowWord(v).substr(0, 12), "0,1,2,3,4,5,");
    EXPECT_EQ(Show("nothing"), "!ReferenceError: nothing is not defined");
    JS_SetStress(false);
}

std::vector<JSObject*> g_survivors;

TEST_F(EngineGc, WhatOutlivesAContextIsShownWhenItEnds)
{
    static constexpr JSClass kClass = {"Held",  0,       nullptr, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr};
    g_survivors.clear();
    JSContext* other = NewContext();
    JS_SetSurvivorHook(other, [](JSContext* context, JSObject* obj) {
        if (const JSClass* found = JS_GetClass(context, obj); found && std::string(found->name) == "Held")
            g_survivors.push_back(obj);
        EXPECT_EQ(JS_NewObject(context, nullptr, nullptr, nullptr), nullptr) << "as in a collection";
    });
    JSObject* held = JS_DefineObject(other, JS_GetGlobalObject(other), "held", &kClass, nullptr, 0);
    ASSERT_NE(JS_NewObject(other, &kClass, nullptr, nullptr), nullptr);
    ASSERT_TRUE(JS_DefineProperty(cx, JS_GetGlobalObject(cx), "held", OBJECT_TO_JSVAL(held), nullptr, nullptr, 0));
    JS_DestroyContext(other);
    EXPECT_EQ(g_survivors, std::vector<JSObject*>{held});
    TakeMisuse();
    EXPECT_EQ(Show("typeof held"), "object");
}

} // namespace
