#include "logs/LogCheck.h"

#include "dumps/report/Html.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace control {

namespace {

using dumps::LogSummary;
using Value = std::optional<double>;

struct Figure {
    std::string_view name;
    const char* unit;
    Value (*value)(const LogSummary&);
};

constexpr Figure FIGURES[] = {
    {"mean", " fps", [](const LogSummary& log) { return log.meanRate; }},
    {"median", " fps",
     [](const LogSummary& log) { return log.medianMs > 0.0 ? Value(1000.0 / log.medianMs) : Value(); }},
    {"low1", " fps", [](const LogSummary& log) { return log.low1Rate; }},
    {"low01", " fps", [](const LogSummary& log) { return log.low01Rate; }},
    {"longest", " ms", [](const LogSummary& log) { return Value(log.longestMs); }},
    {"overlay", " ms", [](const LogSummary& log) { return log.overlayMs; }},
    {"frames", "", [](const LogSummary& log) { return Value(static_cast<double>(log.frames)); }},
};

/// The longer ones first.
constexpr std::string_view SIGNS[] = {"<=", ">=", "<", ">"};

std::string expected() {
    std::string text = "expected a figure, a sign and a number, such as low1<55; the figures are";
    for (const Figure& figure : FIGURES) {
        text.append(&figure == FIGURES ? " " : ", ").append(figure.name);
    }
    return text;
}

Value valueOf(const LogCheck& check, const LogSummary& summary) {
    for (const Figure& figure : FIGURES) {
        if (figure.name == check.figure) {
            return figure.value(summary);
        }
    }
    return std::nullopt;
}

bool takeNumber(std::string_view text, double& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::isfinite(number);
}

}  // namespace

std::optional<LogCheck> parseLogCheck(const std::string& text, std::string& error) {
    LogCheck check;
    check.text = text;
    std::string plain;
    for (const char symbol : text) {
        plain += symbol == ' ' ? "" : std::string(1, symbol);
    }
    const std::size_t begin = plain.find_first_of("<>");
    for (const Figure& figure : FIGURES) {
        check.figure = plain.substr(0, begin) == figure.name ? figure.name : check.figure;
    }
    for (const std::string_view sign : SIGNS) {
        if (begin != std::string::npos && check.sign.empty() &&
            plain.compare(begin, sign.size(), sign) == 0) {
            check.sign = sign;
        }
    }
    if (check.figure.empty() || check.sign.empty() ||
        !takeNumber(std::string_view(plain).substr(begin + check.sign.size()), check.limit)) {
        error = "'" + text + "' is no condition; " + expected();
        return std::nullopt;
    }
    return check;
}

std::optional<bool> holds(const LogCheck& check, const LogSummary& summary) {
    const Value value = valueOf(check, summary);
    if (!value) {
        return std::nullopt;
    }
    const bool isEqual = check.sign.size() == 2 && *value == check.limit;
    return isEqual || (check.sign.front() == '<' ? *value < check.limit : *value > check.limit);
}

std::string valueText(const LogCheck& check, const LogSummary& summary) {
    const Value value = valueOf(check, summary);
    if (!value) {
        return "not known";
    }
    for (const Figure& figure : FIGURES) {
        if (figure.name == check.figure) {
            return dumps::fixedPoint(*value, *figure.unit == '\0' ? 0 : 2) + figure.unit;
        }
    }
    return {};
}

}  // namespace control
