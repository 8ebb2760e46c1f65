#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scene {

/// The property with a notice: a short text that stands on the screen for a second, saying what somebody
/// outside the program has just done. It is no setting: a new text counts, not the text that is there.
inline constexpr const char* NOTICE_PROPERTY = "debug.kordanix.notice";

struct NoticeText {
    std::uint64_t writtenAt = 0;  ///< see noticeTime()
    std::string text;
};

/// Nanoseconds on this machine's clock that nobody can set.
std::uint64_t noticeTime();

/// The property's value for a notice that is written now. Bytes without a glyph become blanks.
std::string encodeNotice(std::string_view text);

/// Nothing unless the value is one that encodeNotice() could return.
std::optional<NoticeText> decodeNotice(std::string_view value);

}  // namespace scene
