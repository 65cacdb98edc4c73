#pragma once

#include <list>

#include "engine/thread_state_detail.h"

namespace qxjs
{

// The engine's class for a host's class record. It must be the first member: the engine hands out its address.
struct HostClass
{
    ::JSClass engine_class;
    std::string name;
    JSClass members; // `name` points into the member above
    bool is_global;
};

constexpr std::uint32_t kPrivateSlot = 0;
constexpr std::uint32_t kParentSlot = 1;
constexpr std::uint32_t kRealmSlot = 2; // of globals only

// The class for a record, made on first sight; null with an error pending when it asks for hooks the engine does not
// call.
HostClass* FindClass(ThreadState& t, const JSClass& clasp, bool is_global);
// The class of an object made by this interface; null for other objects.
const HostClass* ClassOf(::JSObject* obj);
bool SameClass(const HostClass* found, const JSClass& clasp);
bool IsOurGlobal(::JSObject* obj);

// A new global in the one compartment all globals of a thread share, so that objects pass between them as they are.
::JSObject* NewGlobalObject(ThreadState& t, HostClass& host_class);

// Sets up a new object of a class other than a global's.
void InitHostObject(ThreadState& t, ::JSObject* obj, ::JSObject* parent);

// Compiled texts of one global; see script_cache.cpp.
class ScriptCache
{
public:
    struct Key
    {
        std::u16string_view text;
        std::string_view file;
        unsigned line;
        bool scoped;
    };
    // The script compiled for this key, or null. `worth_keeping` tells whether to Insert what gets compiled.
    ::JSScript* Find(const Key& key, bool& worth_keeping);
    void Insert(const Key& key, ::JSScript* script);
    void Trace(JSTracer* trc);
    std::size_t CountScripts() const { return m_entries.size(); }

    static constexpr std::size_t kEntries = 256;
    static constexpr std::size_t kTextUnits = 128 * 1024;
    static constexpr std::size_t kLongestText = 4096;

private:
    struct Cached
    {
        std::uint64_t hash;
        std::u16string text;
        std::string file;
        unsigned line;
        bool scoped;
        ::JSScript* script;
        std::list<Cached>::iterator place;
        Cached* next; // of those in the same bucket
    };
    static std::uint64_t Hash(const Key& key);
    Cached*& Bucket(std::uint64_t hash) { return m_buckets[hash % kBuckets]; }
    Cached* Locate(const Key& key, std::uint64_t hash);
    void DropOldest();

    static constexpr std::size_t kBuckets = 2 * kEntries;
    std::list<Cached> m_entries; // the most recently used first
    std::vector<Cached*> m_buckets;
    std::size_t m_text_units = 0;
    std::vector<std::uint64_t> m_seen;
};

// What belongs to one global and is kept alive by it, and only by it: the global's own trace hook traces this, so
// that a cached script, which refers to its global, does not keep it alive.
struct RealmData
{
    ScriptCache cache;
    std::unordered_map<const HostClass*, ::JSObject*> prototypes;
    std::unordered_map<const NativeRecord*, ::JSObject*> accessors;
    void Trace(JSTracer* trc);
};

RealmData& DataOfGlobal(::JSObject* global);
// The data of the context's global, or of the default one.
RealmData& DataOf(ThreadState& t, const JSContext& cx);
::JSObject* GlobalOf(ThreadState& t, const JSContext& cx);

} // namespace qxjs
