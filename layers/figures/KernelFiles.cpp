#include "figures/KernelFiles.h"

#include "core/StateInfo.h"
#include "figures/sources/KernelText.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>

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

    Reading kilobytes(std::string_view name) const {
        const auto found = sources::kilobytes(view(), name);
        return found ? Reading(*found) : Reading(reason);
    }
};

/// Leaves the text empty when the file cannot be opened.
void readFile(const char* path, FileText& text) {
    FILE* file = core::StateInfo::file_open(path, "r");
    if (file == nullptr) {
        text.reason = sources::reasonOf(errno);
        return;
    }
    text.size = static_cast<unsigned int>(core::StateInfo::file_read(file, text.bytes, BUFFER_SIZE));
    core::StateInfo::file_close(file);
}

Reading readNumber(const char* path) {
    FileText text;
    readFile(path, text);
    std::string_view rest = sources::trimmed(text.view());
    const auto number = sources::takeNumber(rest);
    return text.orReason(number ? Reading(static_cast<double>(*number)) : Reason::MALFORMED);
}

/// Whether there is such a file of the process and it does not lie in the kernel's own file system. Files of
/// the machine may lie elsewhere in a container.
bool isOfSomebodyElse(const char* path) {
    FILE* file = core::StateInfo::file_open(path, "r");
    if (file == nullptr) {
        return false;
    }
    struct statfs status = {};
    const int descriptor = fileno(file);  // -1 for a text in memory
    const bool isKernels =
        descriptor >= 0 && fstatfs(descriptor, &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
    core::StateInfo::file_close(file);
    return !isKernels;
}

}  // namespace

Reason whyUnreadable(const char* path) {
    FileText text;
    readFile(path, text);
    return text.reason;
}

bool isServedOtherFiles() {
    return isOfSomebodyElse("/proc/self/cmdline") || isOfSomebodyElse("/proc/self/stat");
}

SystemMemory readSystemMemory() {
    FileText text;
    readFile("/proc/meminfo", text);
    const Reading total = text.kilobytes("MemTotal");
    const Reading free = text.kilobytes("MemFree");
    const Reading cached = text.kilobytes("Cached");
    const bool hasAll = total && free && cached && *total >= *free + *cached;
    return {total, text.kilobytes("MemAvailable"),
            text.orReason(hasAll ? Reading(*total - *free - *cached) : Reading())};
}

Reading readProportionalSetSize() {
    FileText text;
    readFile("/proc/self/smaps_rollup", text);
    return text.kilobytes("Pss");
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
    const std::uint64_t count = sources::countRanges(sources::trimmed(text.view()));
    return text.orReason(count > 0 ? Reading(static_cast<double>(count)) : Reading());
}

}  // namespace figures
