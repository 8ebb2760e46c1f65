#include "simulator/JsonTree.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <iterator>

namespace simulator {

namespace {

/// A tree is destroyed from the outside in, by calls as deep as it is.
constexpr std::size_t MAX_DEPTH = 32;

/// Where the parser is. It may have read one character further than the value it reports, which is never a
/// visible one on another line: the line of the last visible character is the value's.
struct Place {
    int line = 1;
    int lineOfLastVisible = 1;
};

/// Feeds the parser and keeps account of the lines.
class LineCounter {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCounter(const char* position, Place& place) : mPosition(position), mPlace(&place) {}

    reference operator*() const { return *mPosition; }
    LineCounter& operator++() {
        if (*mPosition == '\n') {
            ++mPlace->line;
        } else if (*mPosition != ' ' && *mPosition != '\t' && *mPosition != '\r') {
            mPlace->lineOfLastVisible = mPlace->line;
        }
        ++mPosition;
        return *this;
    }
    bool operator==(const LineCounter& other) const { return mPosition == other.mPosition; }
    bool operator!=(const LineCounter& other) const { return mPosition != other.mPosition; }

private:
    const char* mPosition;
    Place* mPlace;
};

/// Builds the tree from what the parser reports.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
public:
    TreeBuilder(const Place& place, JsonNode& root) : mPlace(place), mRoot(root) {}

    bool null() override { return add(JsonNode::Kind::OTHER) != nullptr; }
    bool boolean(bool /*value*/) override { return null(); }
    bool number_integer(number_integer_t value) override { return addNumber(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return addNumber(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return addNumber(value); }
    bool string(string_t& value) override {
        add(JsonNode::Kind::TEXT)->text = value;
        return true;
    }
    bool binary(binary_t& /*value*/) override { return false; }

    bool start_object(std::size_t /*size*/) override { return open(JsonNode::Kind::OBJECT); }
    bool start_array(std::size_t /*size*/) override { return open(JsonNode::Kind::LIST); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& value) override {
        if (mOpen.back()->find(value) != nullptr) {
            throw ScriptError{mPlace.lineOfLastVisible,
                              "expected each name once, found a second \"" + value + '"'};
        }
        mName = value;
        return true;
    }

    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error while ..."
        std::string detail = error.what();
        const std::size_t place = detail.find("column ");
        const std::size_t colon = detail.find(": ", place == std::string::npos ? 0 : place);
        if (colon != std::string::npos) {
            detail.erase(0, colon + 2);
        }
        throw ScriptError{mPlace.lineOfLastVisible, "expected JSON, found a " + detail};
    }

private:
    JsonNode* add(JsonNode::Kind kind) {
        JsonNode* node = &mRoot;
        if (!mOpen.empty()) {
            node = &mOpen.back()->items.emplace_back();
        }
        node->kind = kind;
        node->line = mPlace.lineOfLastVisible;
        node->name.swap(mName);
        mName.clear();
        return node;
    }

    bool addNumber(double value) {
        add(JsonNode::Kind::NUMBER)->number = value;
        return true;
    }

    /// Pointers to open nodes stay valid: only the innermost one's list grows.
    bool open(JsonNode::Kind kind) {
        JsonNode* const node = add(kind);
        if (mOpen.size() == MAX_DEPTH) {
            throw ScriptError{node->line, "expected at most 32 lists and objects in one another"};
        }
        mOpen.push_back(node);
        return true;
    }

    bool close() {
        mOpen.pop_back();
        return true;
    }

    const Place& mPlace;
    JsonNode& mRoot;
    std::vector<JsonNode*> mOpen;
    std::string mName;
};

}  // namespace

const JsonNode* JsonNode::find(std::string_view member) const {
    for (const JsonNode& item : items) {
        if (item.name == member) {
            return &item;
        }
    }
    return nullptr;
}

JsonNode parseJson(std::string_view text) {
    Place place;
    JsonNode root;
    TreeBuilder builder(place, root);
    nlohmann::json::sax_parse(LineCounter(text.data(), place), LineCounter(text.data() + text.size(), place),
                              &builder);
    return root;
}

}  // namespace simulator
