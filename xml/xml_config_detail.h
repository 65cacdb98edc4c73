#pragma once

#include "script/script.h"
#include "xml/xml_config.h"

#include <optional>

/// What a configuration is doing, for as long as this lives.
class CXmlConfig::Busy
{
public:
    Busy(Activity& activity, Activity now) : m_activity(activity), m_before(activity) { m_activity = now; }
    ~Busy() { m_activity = m_before; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    Activity& m_activity;
    Activity m_before;
};

/// Keeps the other threads of the process out. The engine's lock comes first, as script that calls an operation holds
/// it already: everybody takes the engine's, then the configuration's, then that of the file.
class CXmlConfig::Locks
{
public:
    explicit Locks(CXmlConfig& config) : Locks(config, true) {}

protected:
    Locks(CXmlConfig& config, bool critical)
    {
        if (config.GetScript())
            m_engine.emplace(CJScript::EngineLock());
        if (critical)
            m_critical.emplace(config.m_lock);
    }

private:
    std::optional<wxThreadCriticalSectionLocker> m_engine;
    std::optional<wxCriticalSectionLocker> m_critical;
};
