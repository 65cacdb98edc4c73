#include "base/text_encoding.h"
#include "qxp/command_line.h"
#include "qxp/diagnostic_printer.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace
{

constexpr size_t LongestQuotedLine = 1000;

bool UseColor(const std::string& when)
{
    if (when != "auto")
        return when == "always";
    const char* const terminal = std::getenv("TERM");
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isRefused = noColor && *noColor;
    return isatty(STDERR_FILENO) && !isRefused && terminal && std::string(terminal) != "dumb";
}

const char* ColorOf(Diagnostic::Kind kind)
{
    switch (kind) {
    case Diagnostic::Kind::error:
        return "\033[1;31m";
    case Diagnostic::Kind::warning:
        return "\033[1;35m";
    default:
        return "\033[1;36m";
    }
}

/// A text of the input, for a terminal: with a code in the place of each character that would do something there.
wxString Shown(const wxString& text)
{
    wxString shown;
    for (const wxUniChar c : text) {
        const wxUint32 code = c.GetValue();
        const bool acts = (code < 0x20 && c != '\t' && c != '\n') || (code >= 0x7f && code < 0xa0);
        shown += acts ? wxString::Format(wxS("\\x%02X"), code) : wxString(c);
    }
    return shown;
}

std::string Quote(wxString text)
{
    const bool isLong = text.length() > LongestQuotedLine;
    text.Truncate(LongestQuotedLine);
    if (isLong)
        text += wxS("...");
    return "    " + ToUtf8(Shown(text.Trim(false).Trim())) + "\n";
}

/// The form that editors understand: "FILE:LINE: error: MESSAGE", the line in question, and notes.
class TextPrinter : public DiagnosticPrinter
{
public:
    explicit TextPrinter(bool color) : m_color(color) {}

    void Print(const Diagnostic& diagnostic) override;

private:
    std::string Line(const std::optional<DiagnosticPlace>& place, Diagnostic::Kind kind, const wxString& message) const;

    bool m_color;
};

std::string TextPrinter::Line(const std::optional<DiagnosticPlace>& place, Diagnostic::Kind kind,
                              const wxString& message) const
{
    // Places and messages hold file names, which must come out as the system knows them.
    const std::string where = place ? ToSystemName(place->name) + ":" + std::to_string(place->line) + ":" : "qxp:";
    const std::string label = std::string(NameOf(kind)) + ":";
    const std::string what = ToSystemName(message) + "\n";
    return m_color ? "\033[1m" + where + "\033[0m " + ColorOf(kind) + label + "\033[0m " + what
                   : where + " " + label + " " + what;
}

void TextPrinter::Print(const Diagnostic& diagnostic)
{
    const auto shown = [&](const std::optional<DiagnosticPlace>& place) {
        return diagnostic.isForToolsOnly ? std::nullopt : place;
    };
    std::string text;
    if (diagnostic.wording)
        text = *diagnostic.wording;
    else if (diagnostic.kind == Diagnostic::Kind::log)
        text = ToUtf8(diagnostic.message) + "\n";
    else
        text = Line(shown(diagnostic.place), diagnostic.kind, diagnostic.message);
    // A warning's directive says what there is to say.
    if (diagnostic.kind == Diagnostic::Kind::error && !diagnostic.wording) {
        if (diagnostic.text && !diagnostic.isForToolsOnly)
            text += Quote(*diagnostic.text);
        for (const DiagnosticNote& note : diagnostic.related)
            text += Line(shown(note.place), Diagnostic::Kind::note, note.message);
    }
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace

std::unique_ptr<DiagnosticPrinter> MakeTextPrinter(const CommonOptions& options)
{
    return std::make_unique<TextPrinter>(UseColor(options.color));
}
