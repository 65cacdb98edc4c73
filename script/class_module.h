#pragma once

#include "script/script_class.h"

#include <wx/module.h>

/// The module that registers a scriptable class while wxWidgets runs. It does so also when the library is loaded into a
/// program whose modules have started already.
template <typename Class> class JSClassModule : public wxModule
{
public:
    /// Registers the class.
    bool OnInit() override { return CJScriptLinkClass::RegisterJSClass(&Class::ms_JSClass); }
    /// Unregisters the class.
    void OnExit() override { CJScriptLinkClass::UnregisterJSClass(&Class::ms_JSClass); }

    /// For a library that is loaded when the modules of the program have started, and by other means than wxWidgets'.
    static bool RegisterLate()
    {
        return wxModule::AreInitialized() && CJScriptLinkClass::RegisterJSClass(&Class::ms_JSClass);
    }
};

/// Gives the scriptable class its module, X_JSNewModule; to be used once, in the class's source file. A macro, because
/// wxWidgets finds modules by classes with names of their own.
#define JS_REGISTER_CLASS_MODULE(Class)                                                                                \
    class Class##_JSNewModule : public JSClassModule<Class>                                                            \
    {                                                                                                                  \
        wxDECLARE_DYNAMIC_CLASS(Class##_JSNewModule);                                                                  \
    };                                                                                                                 \
    wxIMPLEMENT_DYNAMIC_CLASS(Class##_JSNewModule, wxModule);                                                          \
    namespace                                                                                                          \
    {                                                                                                                  \
    [[maybe_unused]] const bool Class##_registeredLate = JSClassModule<Class>::RegisterLate();                         \
    }
