#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Pieces of text for the report.
namespace dumps {

/// The text as it may stand in an element or a quoted attribute, whatever bytes it holds.
std::string escapeHtml(std::string_view text);

/// With that many decimal places, the same in every locale.
std::string fixedPoint(double number, int decimals);

/// With a thin space between thousands.
std::string grouped(std::uint64_t number);

/// A time since the start of a dump that lasts `whole` seconds: "12.3 s", in long ones "2:03".
std::string clockText(double seconds, double whole);

}  // namespace dumps
