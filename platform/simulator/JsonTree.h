#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A value of a JSON text that knows the line it stands on, so that errors in its meaning can be shown there.
struct JsonNode {
    enum class Kind { OTHER, NUMBER, TEXT, LIST, OBJECT };  ///< OTHER: null, true, false

    Kind kind = Kind::OTHER;
    int line = 1;      ///< of a list or an object: where it begins
    std::string name;  ///< of a member of an object; its line is the value's
    double number = 0.0;
    std::string text;
    std::vector<JsonNode> items;  ///< elements or members, in their order

    /// The member of this name, or null.
    const JsonNode* find(std::string_view member) const;
};

/// Something is wrong with a text, at a line of it. Thrown within the simulator only.
struct ScriptError {
    int line;
    std::string message;
};

/// Throws ScriptError when the text is not JSON, an object has the same name twice, or more than 32 lists and
/// objects stand in one another.
JsonNode parseJson(std::string_view text);

}  // namespace simulator
