#pragma once

#include <cstdint>

namespace platform {

/// What somebody asks of this process's logs.
struct LogRequest {
    enum class Kind { START, STOP, TOGGLE, LAST };
    Kind kind = Kind::START;
    std::uint32_t seconds = 0;  ///< with LAST: how long ago the log begins
};

}  // namespace platform
