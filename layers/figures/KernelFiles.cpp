#include "figures/KernelFiles.h"

#include "core/StateInfo.h"

#include <cerrno>
#include <cstdio>

namespace figures {

namespace {

/// The longest of these files has less than 2 KiB; what lies beyond is not needed.
constexpr unsigned int BUFFER_SIZE = 4096;

struct FileText {
    unsigned char bytes[BUFFER_SIZE] = {};
    unsigned int size = 0;
    Reason reason = Reason::MALFORMED;  ///< why there is nothing to be found in it

    std::string_view view() const { return {reinterpret_cast<const char*>(bytes), size}; }

    Reading orReason(Reading found) const { return found ? found : Reading(reason); }
};

Reason reasonOf(int error) {
    return error == EACCES || error == EPERM ? Reason::NOT_ALLOWED : Reason::NO_FILE;
}

/// Leaves the text empty when the file cannot be opened.
void readFile(const char* path, FileText& text) {
    FILE* file = core::StateInfo::file_open(path, "r");
    if (file == nullptr) {
        text.reason = reasonOf(errno);
        return;
    }
    text.size = static_cast<unsigned int>(core::StateInfo::file_read(file, text.bytes, BUFFER_SIZE));
    core::StateInfo::file_close(file);
}

Reading readNumber(const char* path) {
    FileText text;
    readFile(path, text);
    return text.orReason(leadingNumber(text.view()));
}

bool isDigit(char symbol) {
    return symbol >= '0' && symbol <= '9';
}

}  // namespace

Reason whyUnreadable(const char* path) {
    FileText text;
    readFile(path, text);
    return text.reason;
}

Reading leadingNumber(std::string_view text) {
    std::size_t i = text.find_first_not_of(" \t\n");
    if (i == std::string_view::npos || !isDigit(text[i])) {
        return Reason::MALFORMED;
    }
    double number = 0.0;
    for (; i < text.size() && isDigit(text[i]); ++i) {
        number = number * 10.0 + (text[i] - '0');
    }
    // No kernel writes a number beyond 64 bits; without this limit a long run of digits is infinite.
    constexpr double LIMIT = 18446744073709551616.0;                        // 2^64
    return number <= LIMIT ? Reading(number) : Reading(Reason::MALFORMED);  // 2^64 - 1 is rounded to it
}

Reading lastNumberOfRanges(std::string_view text) {
    const std::size_t separator = text.find_last_of("-,");
    return leadingNumber(separator == std::string_view::npos ? text : text.substr(separator + 1));
}

Reading findKilobytes(std::string_view text, std::string_view name) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.size() > name.size() && line.substr(0, name.size()) == name && line[name.size()] == ':') {
            const Reading kilobytes = leadingNumber(line.substr(name.size() + 1));
            return kilobytes ? Reading(*kilobytes * 1024.0) : kilobytes;
        }
        text.remove_prefix(line.size() < text.size() ? line.size() + 1 : text.size());
    }
    return Reason::MALFORMED;
}

SystemMemory readSystemMemory() {
    FileText text;
    readFile("/proc/meminfo", text);
    const auto find = [&text](std::string_view name) {
        return text.orReason(findKilobytes(text.view(), name));
    };
    const Reading total = find("MemTotal");
    const Reading free = find("MemFree");
    const Reading cached = find("Cached");
    const bool hasAll = total && free && cached && *total >= *free + *cached;
    return {total, find("MemAvailable"),
            text.orReason(hasAll ? Reading(*total - *free - *cached) : Reading())};
}

Reading readProportionalSetSize() {
    FileText text;
    readFile("/proc/self/smaps_rollup", text);
    return text.orReason(findKilobytes(text.view(), "Pss"));
}

Reading readGpuMemoryTotal() {
    return readNumber("/sys/kernel/gpu/gpu_mem_total");
}

Reading readGpuMemorySurface() {
    return readNumber("/sys/kernel/gpu/gpu_mem_surface");
}

Reading readGpuMemoryTexture() {
    return readNumber("/sys/kernel/gpu/gpu_mem_texture");
}

Reading readProcessorCount() {
    FileText text;
    readFile("/sys/devices/system/cpu/possible", text);
    const Reading last = lastNumberOfRanges(text.view());
    return last ? Reading(*last + 1.0) : last;
}

}  // namespace figures
