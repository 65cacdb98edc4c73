#include "qxp/diagnostic_printer.h"
#include "qxp/json_text.h"

#include <cstdio>

namespace
{

void AddPlace(const std::optional<DiagnosticPlace>& place, Json& object)
{
    if (!place)
        return;
    object["file"] = ToJson(place->file);
    object["line"] = place->fileLine;
    if (place->column)
        object["column"] = place->column;
}

Json NotesOf(const Diagnostic& diagnostic)
{
    Json notes = Json::array();
    for (const DiagnosticNote& related : diagnostic.related) {
        Json note = Json::object();
        AddPlace(related.place, note);
        note["message"] = ToJson(related.message);
        notes.push_back(std::move(note));
    }
    return notes;
}

/// One object a line, as soon as there is something to say.
class JsonPrinter : public DiagnosticPrinter
{
public:
    void Print(const Diagnostic& diagnostic) override
    {
        Json object = {{"kind", NameOf(diagnostic.kind)}, {"message", ToJson(diagnostic.message)}};
        AddPlace(diagnostic.place, object);
        if (diagnostic.text)
            object["text"] = ToJson(*diagnostic.text);
        if (!diagnostic.related.empty())
            object["related"] = NotesOf(diagnostic);
        const std::string line = WriteJson(object, -1) + "\n";
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
};

} // namespace

std::unique_ptr<DiagnosticPrinter> MakeJsonPrinter(const CommonOptions&)
{
    return std::make_unique<JsonPrinter>();
}
