#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What a process tells of itself to whoever watches it: the layer's figures and the times of its last
/// frames.
///
/// Whoever watches binds a datagram socket at askerPath() and sends the message "figures ASKER" (see
/// ProcessSocket.h). The process answers each such message there with one FigureReport, the last one that its
/// layer has filled, and its layer goes on filling them for ASKED_FOR_MS. A process that nobody asks fills
/// none.
namespace platform {

/// One block of a fixed size, the same for programs of 32 and of 64 bits. Which figure stands where is the
/// layer's matter: `layout` is a number that differs when that does.
struct FigureReport {
    static constexpr std::size_t FIGURES = 64;
    static constexpr std::size_t FRAMES = 256;

    struct Figure {
        double value = 0.0;         ///< counts only with `isThere`
        std::uint16_t isThere = 0;  ///< 1 or 0
        std::uint16_t reason = 0;   ///< the layer's number of why there is no value
        char suffix[4] = {};        ///< in place of the figure's own, ends with a NUL; empty: its own
    };
    /// Milliseconds; negative: not measured.
    struct Frame {
        float total = -1.0F;    ///< from the end of one swap to that of the next
        float swap = -1.0F;     ///< in the program's own swap
        float gpu = -1.0F;      ///< in which the GPU worked on it
        float overlay = -1.0F;  ///< that the layer took of it
    };

    std::uint32_t layout = 0;
    std::uint32_t refreshes = 0;  ///< of the figures so far; 0: nothing has been filled yet
    std::uint64_t frames = 0;     ///< measured so far; `lastFrames` has the last FRAMES of them
    std::int32_t api = 0;         ///< the number of the layer's graphics API
    std::uint32_t width = 0;      ///< of the surface, in pixels
    std::uint32_t height = 0;
    std::uint32_t reserved = 0;
    std::array<Figure, FIGURES> figures;
    std::array<Frame, FRAMES> lastFrames;  ///< the newest one last; those that there never were come first
};
static_assert(sizeof(FigureReport::Figure) == 16 && sizeof(FigureReport::Frame) == 16 &&
                  sizeof(FigureReport) == 32 + 16 * FigureReport::FIGURES + 16 * FigureReport::FRAMES,
              "the same layout everywhere");

/// For how long one question keeps the layer filling.
constexpr std::int64_t ASKED_FOR_MS = 2000;

/// DIRECTORY/asker.ASKER.sock, the socket of somebody who watches processes in this runtime directory. Its
/// number is chosen at random.
std::string askerPath(const std::string& directory, std::uint32_t asker);

/// Reads an answer; nothing unless it has exactly the size of a report.
std::optional<FigureReport> decodeReport(std::string_view bytes);

/// The report to fill while somebody asks for this process's figures, else null. It belongs to the caller
/// until handOutFigures(). One thread at a time. Takes no lock, makes no system call and allocates nothing.
FigureReport* figuresToFill();

/// What figuresToFill() returned last is whole. One thread at a time, as before.
void handOutFigures();

}  // namespace platform
