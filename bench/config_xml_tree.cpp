#include "bench/config_peers.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>

namespace
{

struct Free
{
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};

using Document = std::unique_ptr<xmlDoc, Free>;

const xmlChar* Chars(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

} // namespace

void WriteXmlTree(const std::string& path, int groups)
{
    const Document document(xmlNewDoc(Chars("1.0")));
    xmlNode* const root = xmlNewNode(nullptr, Chars("Config"));
    xmlDocSetRootElement(document.get(), root);
    for (int group = 0; group < groups; ++group) {
        xmlNode* const section = xmlNewChild(root, nullptr, Chars(ConfigGroup(group)), nullptr);
        for (int value = 0; value < ConfigValues; ++value)
            xmlNewProp(section, Chars(ConfigKey(value)), Chars(ConfigText(value)));
    }
    xmlSaveFormatFileEnc(path.c_str(), document.get(), "UTF-8", 1);
}

/// Sections are read in the order of the file: the library has no quick way to one of a name.
std::size_t ReadXmlTree(const std::string& path, int)
{
    const Document document(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NOBLANKS));
    std::size_t size = 0;
    xmlNode* const root = document ? xmlDocGetRootElement(document.get()) : nullptr;
    for (xmlNode* section = root ? root->children : nullptr; section; section = section->next) {
        for (int value = 0; value < ConfigValues; ++value) {
            const std::unique_ptr<xmlChar, Free> text(xmlGetProp(section, Chars(ConfigKey(value))));
            size += text ? std::strlen(reinterpret_cast<const char*>(text.get())) : 0;
        }
    }
    return size;
}
