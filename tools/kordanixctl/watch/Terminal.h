#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace control {

/// The whole screen of the terminal that this program runs in, through ncurses, until the object ends. There
/// is one at a time.
class Terminal {
public:
    enum Style : unsigned int { PLAIN = 0, BOLD = 1, DIM = 2, REVERSE = 4 };

    /// 0xRRGGBB, or the terminal's own colour.
    static constexpr std::uint32_t OWN_COLOR = 0xFF000000;

    enum class Key { NONE, UP, DOWN, RESIZE, CHARACTER };
    struct Press {
        Key key = Key::NONE;
        char character = 0;  ///< with CHARACTER
    };

    Terminal() = default;
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Takes the screen. Returns an empty text, or why it cannot.
    std::string open();

    /// Whether it shows letters beyond ASCII, such as the blocks that graphs are made of.
    bool isUnicode() const { return mIsUnicode; }

    int width() const;
    int height() const;

    void clear();

    /// Writes a text, cut at the screen's edge, which is in ASCII or has one column for each character of
    /// UTF-8.
    void put(int row, int column, const std::string& text, std::uint32_t color = OWN_COLOR,
             unsigned int style = PLAIN, std::uint32_t background = OWN_COLOR);

    /// Shows what was written since clear().
    void show();

    /// Waits that long for a key.
    Press press(int milliseconds);

private:
    short pair(std::uint32_t color, std::uint32_t background);

    bool mIsOpen = false;
    bool mIsUnicode = false;
    std::map<std::pair<short, short>, short> mPairs;
};

}  // namespace control
