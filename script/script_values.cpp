#include "script/script_values.h"

#include "script/class_module.h"
#include "script/native_function.h"

#include <limits>

/// What script gives for a size. Messages call it an int, which is what the others are.
struct SizeArgument
{
    operator std::uint32_t() const { return value; }
    std::uint32_t value = 0;
};

template <> struct JSConversion<SizeArgument>
{
    static constexpr const wchar_t* name = L"int";
    static bool From(JSContext* cx, jsval v, SizeArgument& out)
    {
        double number = 0;
        if (!jsval_to_double(cx, v, number))
            return false;
        constexpr auto highest = std::numeric_limits<std::uint32_t>::max();
        if (number >= highest)
            out.value = highest;
        else
            out.value =
                number > 0 ? static_cast<std::uint32_t>(number) : static_cast<std::uint32_t>(TruncateToInt(number));
        return true;
    }
};

wxIMPLEMENT_CLASS(qxjsPointer, wxObject);
wxIMPLEMENT_CLASS(qxjsSize_t, wxObject);

JSMapEntry qxjsPointer::m_JSMapEntries[] = {JSConstructor<qxjsPointer>(), JSMapEntry()};
const JSMap qxjsPointer::m_JSMap{"wxObjectPtr", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass qxjsPointer::ms_JSClass(&qxjsPointer::m_JSMap);

JSMapEntry qxjsSize_t::m_JSMapEntries[] = {JSConstructor<qxjsSize_t, SizeArgument>(), JSMapEntry()};
const JSMap qxjsSize_t::m_JSMap{"size_t", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass qxjsSize_t::ms_JSClass(&qxjsSize_t::m_JSMap);

JS_REGISTER_CLASS_MODULE(qxjsPointer);
JS_REGISTER_CLASS_MODULE(qxjsSize_t);

qxjsPointer::qxjsPointer(void* value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}

qxjsSize_t::qxjsSize_t(std::uint32_t value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}
