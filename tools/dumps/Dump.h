#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dumps {

/// One recorded frame.
struct DumpedFrame {
    std::uint64_t number = 0;
    std::int64_t timestampMs = 0;  ///< wall clock, since 1970-01-01 00:00 UTC
    std::int64_t passFrameId = 0;  ///< frame that its render passes belong to, 0 without any
    double passFrameMs = 0.0;      ///< duration of that frame
};

/// One render pass.
struct DumpedPass {
    std::size_t frame = 0;  ///< index of the recorded frame that carries it
    std::uint64_t firstValue = 0;
    std::uint64_t secondValue = 0;
    double durationMs = 0.0;
};

/// One value over all frames.
struct DumpedValue {
    std::string name;             ///< "CpuLoad"
    std::string unit;             ///< "%", "MHz", "Bytes", or empty
    std::vector<double> figures;  ///< one a frame; not a number where nobody measured it

    bool hasFigures() const;
};

/// A frame dump as far as it could be read: frames with rising numbers, passes in the order of their frames.
struct Dump {
    std::string folder;
    std::map<std::string, std::string> subjects;  ///< what it is of: "Program", "GPU", "Size"
    std::vector<DumpedFrame> frames;
    std::vector<DumpedValue> values;
    std::vector<DumpedPass> passes;
    std::size_t skippedRows = 0;  ///< of either file, because they were malformed
    std::size_t strayPasses = 0;  ///< left out because their frame is not there
    bool isCut = false;           ///< a file ended in the middle of a row, which was left out
    std::string passError;        ///< why passes.csv could not be read; empty when it was

    /// The value of that name ("Fps"); null when the dump has none.
    const DumpedValue* findValue(const std::string& name) const;
};

}  // namespace dumps
