#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Manual pages and shell completions, from the parser's own tables: what `--help` prints is what they say.
namespace manual {

/// An option, or a positional word.
struct Word {
    std::vector<std::string> names;  ///< "-h", "--help"; of a positional its one name
    std::string value;  ///< what follows an option, such as "PID"; empty for a flag and a positional
    std::string meaning;
    std::string standard;  ///< the value without the option; empty when there is none worth showing
};

/// A program, or one of its verbs.
struct Description {
    std::string name;   ///< of a verb within another one both: "profile list"
    std::string usage;  ///< "kordanixctl run [OPTIONS] [--] PROGRAM [ARGUMENTS]..."
    std::string meaning;
    std::string footer;  ///< more about it; may be empty
    std::vector<Word> options;
    std::vector<Word> places;  ///< positional words, in order
    std::vector<Description> verbs;
};

/// Describes a program that the parser is set up for. The texts are as the parser has them.
Description describe(const CLI::App& app);

/// The first sentence of a text, without its full stop.
std::string firstSentence(const std::string& text);

}  // namespace manual
