// Reading and writing iCalendar with libical, the to-do's texts kept exact.
#include "ical_text.h"

#include "utf8_text.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace IcalText {

namespace {

constexpr std::size_t kLineOctets = 75;
constexpr icalproperty_kind kExactKinds[] = {ICAL_SUMMARY_PROPERTY, ICAL_DESCRIPTION_PROPERTY,
                                             ICAL_CATEGORIES_PROPERTY};

// The content lines of `text` (RFC 5545 3.1): CRLF, LF or a lone CR ends a line, and a line
// that starts with a space or a tab goes on with the one before, less that first character.
std::vector<std::string> unfold(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = text.find_first_of("\r\n", at);
        if (end == std::string::npos)
            end = text.size();
        if (!lines.empty() && end > at && (text[at] == ' ' || text[at] == '\t'))
            lines.back().append(text, at + 1, end - at - 1);
        else
            lines.emplace_back(text, at, end - at);
        at = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
    return lines;
}

// A parameter value may hold a colon inside quotes; the first one outside starts the value.
std::size_t valueStart(const std::string& line) {
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); i++) {
        if (line[i] == '"')
            quoted = !quoted;
        else if (line[i] == ':' && !quoted)
            return i + 1;
    }
    return std::string::npos;
}

icalproperty_kind kindOf(const std::string& line) {
    return icalproperty_string_to_kind(line.substr(0, line.find_first_of(";:")).c_str());
}

bool isExact(icalproperty_kind kind) {
    for (icalproperty_kind exact : kExactKinds) {
        if (kind == exact)
            return true;
    }
    return false;
}

// RFC 5545 3.3.11: the escapes of TEXT and, in a list, the bare commas between its values. A
// backslash before anything else stays, as nothing says what it would stand for.
std::vector<std::string> textValues(const std::string& value, bool list) {
    std::vector<std::string> values(1);
    for (std::size_t i = 0; i < value.size(); i++) {
        char c = value[i];
        char next = i + 1 < value.size() ? value[i + 1] : '\0';
        if (c == ',' && list) {
            values.emplace_back();
        } else if (c == '\\' && (next == 'n' || next == 'N')) {
            values.back() += '\n';
            i++;
        } else if (c == '\\' && (next == '\\' || next == ';' || next == ',')) {
            values.back() += next;
            i++;
        } else {
            values.back() += c;
        }
    }
    return values;
}

// Puts markers in place of the texts of an exact property: "#n", n the text's index in `texts`,
// which libical reads as it is.
void markTexts(std::string& line, std::vector<std::string>& texts) {
    icalproperty_kind kind = kindOf(line);
    std::size_t start = valueStart(line);
    if (!isExact(kind) || start == std::string::npos)
        return;
    std::string markers;
    for (std::string& text : textValues(line.substr(start), kind == ICAL_CATEGORIES_PROPERTY)) {
        markers += (markers.empty() ? "#" : ",#") + std::to_string(texts.size());
        texts.push_back(std::move(text));
    }
    line.replace(start, std::string::npos, markers);
}

void restoreTexts(icalcomponent* component, const std::vector<std::string>& texts) {
    for (icalproperty_kind kind : kExactKinds) {
        for (icalproperty* p = icalcomponent_get_first_property(component, kind); p != nullptr;
             p = icalcomponent_get_next_property(component, kind)) {
            icalvalue* value = icalproperty_get_value(p);
            if (value == nullptr || icalvalue_isa(value) != ICAL_TEXT_VALUE)
                continue;
            const char* marker = icalvalue_get_text(value);
            char* end = nullptr;
            unsigned long index = std::strtoul(marker + 1, &end, 10);
            if (marker[0] == '#' && end != marker + 1 && *end == '\0' && index < texts.size())
                icalvalue_set_text(value, texts[index].c_str());
        }
    }
}

// Every component below `root`, root included, without recursion: a reply may nest deeply.
std::vector<icalcomponent*> allComponents(icalcomponent* root) {
    std::vector<icalcomponent*> all{root};
    for (std::size_t i = 0; i < all.size(); i++) {
        for (icalcomponent* c = icalcomponent_get_first_component(all[i], ICAL_ANY_COMPONENT);
             c != nullptr; c = icalcomponent_get_next_component(all[i], ICAL_ANY_COMPONENT))
            all.push_back(c);
    }
    return all;
}

std::string fold(const std::string& line) {
    std::string out;
    std::size_t at = 0;
    std::size_t room = kLineOctets;
    while (line.size() - at > room) {
        std::size_t take = Utf8Text::fitLength(line.data() + at, line.size() - at, room);
        out.append(line, at, take);
        out += "\r\n ";
        at += take;
        room = kLineOctets - 1; // after the space that marks the continuation
    }
    out.append(line, at, std::string::npos);
    return out + "\r\n";
}

// libical writes each of a CATEGORIES property's characters as TEXT would, but for commas and
// semicolons: those get their backslash here.
std::string escapedCategory(const std::string& written) {
    std::string line = unfold(written).front();
    std::size_t start = valueStart(line);
    for (std::size_t i = start; start != std::string::npos && i < line.size(); i++) {
        if (line[i] == ',' || line[i] == ';')
            line.insert(i++, 1, '\\');
    }
    return fold(line);
}

// The end of the content line at `at` in libical's output, continuation lines included.
std::size_t lineEnd(const std::string& ics, std::size_t at) {
    std::size_t end = ics.find("\r\n", at);
    while (end != std::string::npos && end + 2 < ics.size() && ics[end + 2] == ' ')
        end = ics.find("\r\n", end + 2);
    return end == std::string::npos ? ics.size() : end + 2;
}

} // namespace

icalcomponent* parse(const std::string& ics) {
    std::vector<std::string> texts;
    std::string marked;
    for (std::string& line : unfold(ics)) {
        markTexts(line, texts);
        marked += line + "\r\n";
    }
    icalerror_set_errors_are_fatal(0);
    icalcomponent* root = icalparser_parse_string(marked.c_str());
    if (root != nullptr) {
        for (icalcomponent* c : allComponents(root))
            restoreTexts(c, texts);
    }
    return root;
}

std::string write(icalcomponent* component) {
    std::unique_ptr<char, decltype(&std::free)> text(icalcomponent_as_ical_string_r(component),
                                                     &std::free);
    if (!text)
        return {};
    std::string ics = text.get();
    std::string out;
    for (std::size_t at = 0; at < ics.size();) {
        std::size_t end = lineEnd(ics, at);
        std::string line = ics.substr(at, end - at);
        out += kindOf(line) == ICAL_CATEGORIES_PROPERTY ? escapedCategory(line) : line;
        at = end;
    }
    return out;
}

} // namespace IcalText
