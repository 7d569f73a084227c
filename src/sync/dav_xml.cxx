// Building REPORT bodies and reading multistatus replies with pugixml, which leaves namespaces
// to its user: prefixes are looked up in the xmlns declarations in scope.
#include "dav_xml.h"

#include <cstdlib>
#include <cstring>
#include <pugixml.hpp>
#include <sstream>

namespace DavXml {

namespace {

const char* const kDav = "DAV:";
const char* const kCaldav = "urn:ietf:params:xml:ns:caldav";

std::string serialize(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw);
    return out.str();
}

pugi::xml_node reportRoot(pugi::xml_document& doc, const char* name) {
    pugi::xml_node root = doc.append_child(name);
    root.append_attribute("xmlns:d") = kDav;
    root.append_attribute("xmlns:c") = kCaldav;
    return root;
}

void askEtagAndData(pugi::xml_node parent) {
    pugi::xml_node prop = parent.append_child("d:prop");
    prop.append_child("d:getetag");
    prop.append_child("c:calendar-data");
}

// The namespace a prefix (empty for the default) stands for at `node`.
std::string namespaceOf(pugi::xml_node node, const std::string& prefix) {
    std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
    for (; node; node = node.parent()) {
        if (pugi::xml_attribute a = node.attribute(attribute.c_str()))
            return a.value();
    }
    return {};
}

bool isElement(pugi::xml_node node, const char* ns, const char* local) {
    if (node.type() != pugi::node_element)
        return false;
    const char* name = node.name();
    const char* colon = std::strchr(name, ':');
    std::string prefix = colon != nullptr ? std::string(name, colon) : std::string();
    const char* localName = colon != nullptr ? colon + 1 : name;
    return std::strcmp(localName, local) == 0 && namespaceOf(node, prefix) == ns;
}

pugi::xml_node child(pugi::xml_node parent, const char* ns, const char* local) {
    for (pugi::xml_node c : parent.children()) {
        if (isElement(c, ns, local))
            return c;
    }
    return {};
}

// "HTTP/1.1 404 Not Found" gives 404; anything unreadable gives 0.
long statusCode(pugi::xml_node status) {
    const char* text = status.child_value();
    const char* space = std::strchr(text, ' ');
    return space != nullptr ? std::strtol(space + 1, nullptr, 10) : 0;
}

std::string hrefIn(pugi::xml_node property) {
    return child(property, kDav, "href").text().get();
}

bool holdsComponent(pugi::xml_node set, const char* name) {
    for (pugi::xml_node c : set.children()) {
        if (isElement(c, kCaldav, "comp") && std::strcmp(c.attribute("name").value(), name) == 0)
            return true;
    }
    return false;
}

// The properties finding a task list asks for; `components` tells whether the calendar said
// which ones it takes.
void readListProps(pugi::xml_node prop, DavResource& resource, bool& components) {
    if (pugi::xml_node type = child(prop, kDav, "resourcetype"))
        resource.isCalendar = static_cast<bool>(child(type, kCaldav, "calendar"));
    if (pugi::xml_node set = child(prop, kCaldav, "supported-calendar-component-set")) {
        components = true;
        resource.holdsTodos = holdsComponent(set, "VTODO");
    }
    if (pugi::xml_node name = child(prop, kDav, "displayname"))
        resource.displayName = name.text().get();
    if (pugi::xml_node principal = child(prop, kDav, "current-user-principal"))
        resource.principal = hrefIn(principal);
    if (pugi::xml_node home = child(prop, kCaldav, "calendar-home-set"))
        resource.calendarHome = hrefIn(home);
}

void readPropstat(pugi::xml_node propstat, DavResource& resource, bool& components) {
    long status = statusCode(child(propstat, kDav, "status"));
    if (status < 200 || status > 299)
        return;
    resource.status = status;
    pugi::xml_node prop = child(propstat, kDav, "prop");
    if (pugi::xml_node etag = child(prop, kDav, "getetag"))
        resource.etag = etag.child_value();
    if (pugi::xml_node data = child(prop, kCaldav, "calendar-data")) {
        resource.calendarData = data.text().get();
        resource.hasData = true;
    }
    readListProps(prop, resource, components);
}

bool readResponse(pugi::xml_node response, DavResource& resource) {
    pugi::xml_node href = child(response, kDav, "href");
    if (!href)
        return false;
    resource.href = href.text().get();
    if (pugi::xml_node status = child(response, kDav, "status"))
        resource.status = statusCode(status);
    bool components = false;
    for (pugi::xml_node c : response.children()) {
        if (isElement(c, kDav, "propstat"))
            readPropstat(c, resource, components);
    }
    // A calendar that does not say which components it takes takes them all (RFC 4791 5.2.3);
    // a scheduling inbox or outbox may list VTODO but is no calendar.
    resource.holdsTodos = resource.isCalendar && (resource.holdsTodos || !components);
    return !resource.href.empty();
}

} // namespace

std::string syncCollection(const std::string& token) {
    pugi::xml_document doc;
    pugi::xml_node root = reportRoot(doc, "d:sync-collection");
    root.append_child("d:sync-token").text() = token.c_str();
    root.append_child("d:sync-level").text() = "1";
    root.append_child("d:prop").append_child("d:getetag");
    return serialize(doc);
}

std::string multiget(const std::vector<std::string>& hrefs) {
    pugi::xml_document doc;
    pugi::xml_node root = reportRoot(doc, "c:calendar-multiget");
    askEtagAndData(root);
    for (const std::string& href : hrefs)
        root.append_child("d:href").text() = href.c_str();
    return serialize(doc);
}

std::string propfind() {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("d:propfind");
    root.append_attribute("xmlns:d") = kDav;
    pugi::xml_node prop = root.append_child("d:prop");
    prop.append_child("d:getetag");
    return serialize(doc);
}

std::string propfindLists() {
    pugi::xml_document doc;
    pugi::xml_node prop = reportRoot(doc, "d:propfind").append_child("d:prop");
    for (const char* name :
         {"d:resourcetype", "d:displayname", "c:supported-calendar-component-set",
          "d:current-user-principal", "c:calendar-home-set"})
        prop.append_child(name);
    return serialize(doc);
}

std::string mkcalendar(const std::string& displayName) {
    pugi::xml_document doc;
    pugi::xml_node prop =
        reportRoot(doc, "c:mkcalendar").append_child("d:set").append_child("d:prop");
    prop.append_child("d:displayname").text() = displayName.c_str();
    prop.append_child("c:supported-calendar-component-set")
        .append_child("c:comp")
        .append_attribute("name") = "VTODO";
    return serialize(doc);
}

std::string errorCondition(const std::string& body) {
    pugi::xml_document doc;
    if (!doc.load_buffer(body.data(), body.size()))
        return {};
    pugi::xml_node root = doc.document_element();
    pugi::xml_node condition =
        root.find_child([](pugi::xml_node c) { return c.type() == pugi::node_element; });
    if (!isElement(root, kDav, "error") || !condition)
        return {};
    const char* colon = std::strchr(condition.name(), ':');
    return colon != nullptr ? colon + 1 : condition.name();
}

bool parseMultistatus(const std::string& body, DavListing& out, std::string& error) {
    pugi::xml_document doc;
    pugi::xml_parse_result parsed = doc.load_buffer(body.data(), body.size());
    if (!parsed) {
        error = std::string("the server's reply is not XML: ") + parsed.description();
        return false;
    }
    pugi::xml_node root = doc.document_element();
    if (!isElement(root, kDav, "multistatus")) {
        error = "the server's reply is not a WebDAV multistatus";
        return false;
    }
    out.syncToken = child(root, kDav, "sync-token").text().get();
    for (pugi::xml_node c : root.children()) {
        DavResource resource;
        if (isElement(c, kDav, "response") && readResponse(c, resource))
            out.resources.push_back(std::move(resource));
    }
    return true;
}

} // namespace DavXml
