#include "manual/CompletionTable.h"

#include "settings/Presets.h"
#include "settings/PropertyTable.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string_view>

namespace manual {

namespace {

struct Kind {
    std::string_view verb;  ///< empty: of any
    std::string_view name;  ///< of the option's value or of the positional word
    std::string_view kind;
};

/// What the parser does not know of the words it takes.
constexpr Kind KINDS[] = {
    {"", "PID", "process"},
    {"", "DIR", "folder"},
    {"", "FOLDER", "folder"},
    {"", "FILE", "file"},
    {"", "NAME=VALUE", "assignment"},
    {"set", "NAME", "pairs"},
    {"get", "NAME", "property"},
    {"key", "KEY", "=dump capture"},
    {"run", "NAME", "preset"},
    {"preset", "NAME", "preset"},
    {"save", "NAME", "profile"},
    {"profile", "ACTION", "=list edit check"},
    {"profile", "NAME", "profile"},
    {"android", "PACKAGE", "word"},
    {"android", "VERB", "=install start set dump capture picture pull report off doctor"},
};

std::string kindOf(std::string_view verb, std::string_view name, std::string_view otherwise) {
    const auto* const found = std::find_if(std::begin(KINDS), std::end(KINDS), [&](const Kind& row) {
        return row.name == name && (row.verb.empty() || row.verb == verb);
    });
    const std::string_view kind = found == std::end(KINDS) ? otherwise : found->kind;
    return kind == "preset" ? "=" + CLI::detail::join(control::presetNames(), " ") : std::string(kind);
}

void writeWords(const Description& verb, const std::string& name, std::ostream& out) {
    for (const Word& option : verb.options) {
        out << "option|" << name << '|';
        for (const std::string& spelling : option.names) {
            out << (&spelling == &option.names.front() ? "" : " ") << spelling;
        }
        out << '|' << (option.value.empty() ? "" : kindOf(name, option.value, "word")) << '|'
            << firstSentence(option.meaning) << '\n';
    }
    for (const Word& place : verb.places) {
        out << "place|" << name << '|' << kindOf(name, place.names.front(), "file") << '|'
            << firstSentence(place.meaning) << '\n';
    }
}

void writeVerb(const Description& verb, std::ostream& out) {
    out << "verb|" << verb.name << '|' << firstSentence(verb.meaning) << '\n';
    if (!verb.verbs.empty()) {
        out << "place|" << verb.name << "|=";
        for (const Description& inner : verb.verbs) {
            out << (&inner == &verb.verbs.front() ? "" : " ") << inner.name.substr(verb.name.size() + 1);
        }
        out << "|What to do\n";
    }
    writeWords(verb, verb.name, out);
    if (verb.usage.find(" PROGRAM") != std::string::npos) {
        out << "place|" << verb.name << "|program|The program, and its arguments\n";
    }
}

std::string_view valuesOf(control::PropertyType type) {
    switch (type) {
        case control::PropertyType::BOOLEAN:
            return "true false";
        case control::PropertyType::POSITION:
            return "TOP_LEFT TOP_CENTER TOP_RIGHT CENTER_LEFT CENTER_RIGHT BOTTOM_LEFT BOTTOM_CENTER "
                   "BOTTOM_RIGHT";
        default:
            return "";
    }
}

std::string quoted(const std::string& text) {
    std::string out;
    for (const char letter : text) {
        out += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return out;
}

}  // namespace

std::string completionTable(const Description& program) {
    std::ostringstream out;
    writeWords(program, "", out);
    for (const Description& verb : program.verbs) {
        writeVerb(verb, out);
    }
    out << "verb|help|Say more about a verb\nplace|help|=";
    for (const Description& verb : program.verbs) {
        out << (&verb == &program.verbs.front() ? "" : " ") << verb.name;
    }
    out << "|A verb\nverb|version|Print the version\n";
    std::string_view owner;  // "its place" is that of the last one that said what it is
    for (const control::Property& property : control::properties()) {
        const bool isOwn = property.meaning.substr(0, 4) != "its ";
        owner = isOwn ? property.meaning : owner;
        out << "property|" << property.shortName << '|' << valuesOf(property.type) << '|' << property.meaning
            << (isOwn ? "" : ": ") << (isOwn ? "" : owner) << '\n';
    }
    return quoted(out.str());
}

}  // namespace manual
