#include "manual/ManPage.h"

#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <ostream>
#include <utility>

namespace manual {

namespace {

/// The variables that the program and the overlay read; no parser knows them.
constexpr std::pair<const char*, const char*> ENVIRONMENT[] = {
    {"KORDANIX", "1: a Vulkan program that starts with it has the overlay, without kordanixctl."},
    {"KORDANIX_DISABLE", "1: keeps the overlay out of Vulkan programs."},
    {"KORDANIX_RUNTIME_DIR",
     "The folder of the properties, instead of $XDG_RUNTIME_DIR/kordanix or /tmp/kordanix-<user id>."},
    {"KORDANIX_DUMP_DIR", "The folder for frame dumps, instead of the program's working folder."},
    {"KORDANIX_LOG", "The least level of the log, a letter: V, D, I, W, E, F, or S for silence."},
    {"KORDANIX_LOG_FILE", "A file for the log, instead of standard error."},
};

constexpr std::pair<control::PropertyType, const char*> TYPES[] = {
    {control::PropertyType::BOOLEAN, "switch"}, {control::PropertyType::POSITION, "place"},
    {control::PropertyType::COLOR, "colour"},   {control::PropertyType::OPACITY, "opacity"},
    {control::PropertyType::API, "number"},     {control::PropertyType::SCALE, "size"},
    {control::PropertyType::KEY, "key"},
};

const char* typeName(control::PropertyType type) {
    for (const auto& [known, name] : TYPES) {
        if (known == type) {
            return name;
        }
    }
    return "text";
}

/// A text in which troff sees no request and no escape, with hyphens that may be copied from the page.
std::string plain(std::string_view text) {
    std::string out = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
    for (const char letter : text) {
        switch (letter) {
            case '\\':
                out += "\\e";
                break;
            case '-':
                out += "\\-";
                break;
            case '\'':
                out += "\\(aq";
                break;
            case '\n':
                out += "\n\\&";
                break;
            default:
                out += letter;
        }
    }
    return out;
}

std::string bold(std::string_view text) {
    return "\\fB" + plain(text) + "\\fR";
}

void writeItem(const std::string& tag, std::string_view text, std::ostream& out) {
    out << ".TP\n" << tag << '\n' << plain(text) << '\n';
}

std::string sentence(const std::string& text) {
    return text + (text.empty() || text.back() == '.' ? "" : ".");
}

void writeWords(const std::vector<Word>& words, std::ostream& out) {
    for (const Word& word : words) {
        std::string tag;
        for (const std::string& name : word.names) {
            tag += (tag.empty() ? "" : ", ") + bold(name);
        }
        tag += word.value.empty() ? "" : " \\fI" + plain(word.value) + "\\fR";
        writeItem(tag,
                  sentence(word.meaning + (word.standard.empty() ? "" : " (default " + word.standard + ")")),
                  out);
    }
}

/// Only --help is said of every verb; the page says it once.
std::vector<Word> ownOptions(const Description& verb) {
    std::vector<Word> own;
    for (const Word& option : verb.options) {
        if (option.names.back() != "--help") {
            own.push_back(option);
        }
    }
    return own;
}

void writeVerbSection(const Description& verb, std::ostream& out) {
    out << ".SS " << plain(verb.name) << "\n.B " << plain(verb.usage) << "\n.PP\n"
        << plain(sentence(verb.meaning)) << '\n';
    if (!verb.footer.empty()) {
        const bool isTable = verb.footer.find('\n') != std::string::npos;
        out << ".PP\n" << (isTable ? ".nf\n" : "") << plain(verb.footer) << (isTable ? "\n.fi\n" : "\n");
    }
    writeWords(verb.places, out);
    writeWords(ownOptions(verb), out);
    for (const Description& inner : verb.verbs) {
        writeVerbSection(inner, out);
    }
}

void writeProperties(std::ostream& out) {
    out << ".SH PROPERTIES\nEach with its kind of value and its default.\n";
    for (const control::Property& property : control::properties()) {
        const std::string standard = control::toDisplayText(property, std::nullopt);
        writeItem(bold(property.shortName) + " \\fI" + typeName(property.type) + "\\fR" +
                      (standard.empty() ? "" : " " + plain(standard)),
                  property.meaning, out);
    }
    out << ".SS Values\n";
    for (const auto& [type, name] : TYPES) {
        writeItem(std::string("\\fI") + name + "\\fR", control::expectedText(type), out);
    }
}

}  // namespace

void writeManPage(const Description& program, std::ostream& out) {
    out << ".TH KORDANIXCTL 1 \"\" \"Kordanix " KORDANIX_VERSION "\" \"User Commands\"\n"
        << ".SH NAME\nkordanixctl \\- the performance overlay over programs, and its settings\n"
        << ".SH SYNOPSIS\n.B " << plain(program.usage) << "\n.SH DESCRIPTION\n"
        << plain(program.meaning) << "\n.PP\n"
        << plain(program.footer) << "\n.SH OPTIONS\n";
    writeWords(program.options, out);
    out << ".SH VERBS\n";
    for (const Description& verb : program.verbs) {
        writeVerbSection(verb, out);
    }
    writeProperties(out);
    out << ".SH ENVIRONMENT\n";
    for (const auto& [name, meaning] : ENVIRONMENT) {
        writeItem(bold(name), meaning, out);
    }
}

}  // namespace manual
