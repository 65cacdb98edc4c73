#include "base/text_encoding.h"
#include "qxp/diagnostic_printer.h"
#include "qxp/json_text.h"
#include "qxp/uri.h"

#include <cstdio>

namespace
{

constexpr const char* Schema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
constexpr int Indent = 2;

Json MessageOf(const wxString& text)
{
    return {{"text", ToJson(text)}};
}

/// A location of a place, if there is one. The text, if there is one, is the line that stands there.
Json LocationOf(const std::optional<DiagnosticPlace>& place, const std::optional<wxString>& text)
{
    Json location = Json::object();
    if (!place)
        return location;
    Json region = {{"startLine", place->fileLine}};
    if (place->column)
        region["startColumn"] = place->column;
    if (text)
        region["snippet"] = MessageOf(*text);
    location["physicalLocation"] = {{"artifactLocation", {{"uri", UriOfFile(ToSystemName(place->file))}}},
                                    {"region", std::move(region)}};
    return location;
}

Json ResultOf(const Diagnostic& diagnostic)
{
    Json result = {{"level", NameOf(diagnostic.kind)}, {"message", MessageOf(diagnostic.message)}};
    if (diagnostic.place)
        result["locations"] = Json::array({LocationOf(diagnostic.place, diagnostic.text)});
    for (const DiagnosticNote& note : diagnostic.related) {
        Json location = LocationOf(note.place, std::nullopt);
        location["message"] = MessageOf(note.message);
        result["relatedLocations"].push_back(std::move(location));
    }
    return result;
}

/// One document about the whole run, at its end.
class SarifPrinter : public DiagnosticPrinter
{
public:
    void Print(const Diagnostic& diagnostic) override;
    void Finish(int status) override;

private:
    Json m_results = Json::array();
    Json m_notifications = Json::array();
};

void SarifPrinter::Print(const Diagnostic& diagnostic)
{
    if (diagnostic.kind == Diagnostic::Kind::log)
        m_notifications.push_back({{"level", "note"}, {"message", MessageOf(diagnostic.message)}});
    else
        m_results.push_back(ResultOf(diagnostic));
}

void SarifPrinter::Finish(int status)
{
    Json invocation = {{"executionSuccessful", status == 0}, {"exitCode", status}};
    if (!m_notifications.empty())
        invocation["toolExecutionNotifications"] = std::move(m_notifications);
    const Json run = {{"tool", {{"driver", {{"name", "qxp"}, {"version", QXP_VERSION}}}}},
                      {"columnKind", "unicodeCodePoints"},
                      {"invocations", Json::array({std::move(invocation)})},
                      {"results", std::move(m_results)}};
    const Json document = {{"$schema", Schema}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
    const std::string text = WriteJson(document, Indent) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace

std::unique_ptr<DiagnosticPrinter> MakeSarifPrinter(const CommonOptions&)
{
    return std::make_unique<SarifPrinter>();
}
