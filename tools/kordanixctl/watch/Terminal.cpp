#include "watch/Terminal.h"

#define NCURSES_WIDECHAR 1
#include <curses.h>
#include <langinfo.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

namespace control {

namespace {

constexpr short TERMINALS_OWN = -1;

int channel(std::uint32_t color, int shift) {
    return static_cast<int>(color >> shift & 0xFF);
}

/// The nearest of the terminal's colours: of the cube of 6 by 6 by 6, or of the first eight.
short nearest(std::uint32_t color) {
    if (color == Terminal::OWN_COLOR || COLORS < 8) {
        return TERMINALS_OWN;
    }
    const int red = channel(color, 16);
    const int green = channel(color, 8);
    const int blue = channel(color, 0);
    if (COLORS < 256) {
        constexpr int BRIGHT = 100;
        return static_cast<short>((red > BRIGHT ? COLOR_RED : 0) | (green > BRIGHT ? COLOR_GREEN : 0) |
                                  (blue > BRIGHT ? COLOR_BLUE : 0));
    }
    // The cube's steps are 0, 95, 135, 175, 215 and 255.
    const auto step = [](int value) { return value < 48 ? 0 : value < 115 ? 1 : (value - 35) / 40; };
    return static_cast<short>(16 + 36 * step(red) + 6 * step(green) + step(blue));
}

/// How many bytes the first `columns` characters have.
std::size_t bytesOf(const std::string& text, int columns) {
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        const bool isFirst = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
        if (isFirst && columns-- <= 0) {
            break;
        }
    }
    return i;
}

}  // namespace

Terminal::~Terminal() {
    if (mIsOpen) {
        endwin();
    }
}

std::string Terminal::open() {
    if (isatty(STDOUT_FILENO) == 0 || isatty(STDIN_FILENO) == 0) {
        return "this is no terminal; 'kordanixctl watch --json' prints a line a refresh";
    }
    std::setlocale(LC_CTYPE, "");  // alone: numbers stay as they are
    mIsUnicode = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    if (newterm(nullptr, stdout, stdin) == nullptr) {
        const char* const name = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): no other thread
        return "the terminal '" + std::string(name == nullptr ? "" : name) + "' (TERM) is not known";
    }
    mIsOpen = true;
    cbreak();
    noecho();
    nonl();
    keypad(stdscr, TRUE);
    curs_set(0);
    set_escdelay(25);
    if (has_colors()) {
        start_color();
        use_default_colors();
    }
    return {};
}

int Terminal::width() const {
    return getmaxx(stdscr);
}

int Terminal::height() const {
    return getmaxy(stdscr);
}

void Terminal::clear() {
    erase();
}

void Terminal::put(int row, int column, const std::string& text, std::uint32_t color, unsigned int style,
                   std::uint32_t background) {
    if (row < 0 || row >= height() || column < 0 || column >= width()) {
        return;
    }
    attr_t attributes = A_NORMAL;
    attributes |= (style & BOLD) != 0 ? A_BOLD : A_NORMAL;
    attributes |= (style & DIM) != 0 ? A_DIM : A_NORMAL;
    attributes |= (style & REVERSE) != 0 ? A_REVERSE : A_NORMAL;
    attr_set(attributes, pair(color, background), nullptr);
    mvaddnstr(row, column, text.c_str(), static_cast<int>(bytesOf(text, width() - column)));
    attr_set(A_NORMAL, 0, nullptr);
}

void Terminal::show() {
    refresh();
}

Terminal::Press Terminal::press(int milliseconds) {
    timeout(milliseconds);
    const int key = getch();
    switch (key) {
        case KEY_UP:
            return {Key::UP, 0};
        case KEY_DOWN:
            return {Key::DOWN, 0};
        case KEY_RESIZE:
            return {Key::RESIZE, 0};
        default:
            return key > 0 && key < 128 ? Press{Key::CHARACTER, static_cast<char>(key)} : Press();
    }
}

/// The number of a pair of colours, made when it is first used.
short Terminal::pair(std::uint32_t color, std::uint32_t background) {
    const std::pair<short, short> wanted(nearest(color), nearest(background));
    if (!has_colors() || wanted == std::pair(TERMINALS_OWN, TERMINALS_OWN)) {
        return 0;
    }
    const auto found = mPairs.find(wanted);
    if (found != mPairs.end()) {
        return found->second;
    }
    const auto number = static_cast<short>(mPairs.size() + 1);
    if (number >= COLOR_PAIRS || init_pair(number, wanted.first, wanted.second) == ERR) {
        return 0;
    }
    return mPairs[wanted] = number;
}

}  // namespace control
