#include "properties/Notices.h"

#include "properties/SetCommand.h"
#include "scene/NoticeText.h"
#include "settings/Properties.h"

#include <ostream>

namespace control {

Assignment noticeOf(const std::string& text) {
    return {scene::NOTICE_PROPERTY, scene::encodeNotice(text)};
}

void showNotice(const std::string& text) {
    std::ostream nowhere(nullptr);
    writeAssignments({noticeOf(text)}, true, nowhere);
}

std::chrono::milliseconds noticeRest() {
    constexpr std::uint64_t SEEN_MS = 1300;
    constexpr std::uint64_t NS_PER_MS = 1000000;
    const auto last = scene::decodeNotice(readProperty(scene::NOTICE_PROPERTY).value_or(std::string()));
    const std::uint64_t age =
        last ? (scene::noticeTime() - last->writtenAt) / NS_PER_MS : SEEN_MS;  // wraps when it is nonsense
    return std::chrono::milliseconds(age < SEEN_MS ? SEEN_MS - age : 0);
}

}  // namespace control
