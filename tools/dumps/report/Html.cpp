#include "dumps/report/Html.h"

#include <array>
#include <charconv>
#include <cmath>

namespace dumps {

std::string escapeHtml(std::string_view text) {
    std::string html;
    html.reserve(text.size());
    for (const char symbol : text) {
        switch (symbol) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                // Control characters, NUL among them, may not stand in a page.
                html += static_cast<unsigned char>(symbol) < ' ' ? std::string("\xEF\xBF\xBD")
                                                                 : std::string(1, symbol);
        }
    }
    return html;
}

std::string fixedPoint(double number, int decimals) {
    // The longest double has 309 digits before the point.
    std::array<char, 340> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    return {text.data(), result.ptr};
}

std::string grouped(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3;) {
        i -= 3;
        text.insert(i, "\xE2\x80\xAF");
    }
    return text;
}

std::string clockText(double seconds, double whole) {
    constexpr double SECONDS_PER_MINUTE = 60.0;
    if (whole < 2.0 * SECONDS_PER_MINUTE) {
        return fixedPoint(seconds, 1) + " s";
    }
    const double minutes = std::floor(seconds / SECONDS_PER_MINUTE);
    const std::string rest = fixedPoint(std::floor(seconds - minutes * SECONDS_PER_MINUTE), 0);
    return fixedPoint(minutes, 0) + (rest.size() < 2 ? ":0" : ":") + rest;
}

}  // namespace dumps
