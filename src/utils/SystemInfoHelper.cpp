#include "utils/SystemInfoHelper.h"

#include "core/SysPropWatcher.h"
#include "utils/File.h"
#include "utils/Log.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace utils {

namespace {

// The last vendor found. Idempotent, so relaxed order is enough.
std::atomic<int> sGpuVendorCache{Vendor::UNKNOWN};

/// Model prefixes in the order of the device index.
constexpr std::array<std::string_view, 9> MODELS = {"QV-A31", "QV-B31", "QV-A32", "QV-B32", "QV-C31",
                                                    "QV-C21", "QV-A33", "QV-B33", "QV-C32"};
constexpr std::size_t MODEL_LENGTH = 6;

/// Returns the index of the model, or the number of known models.
int indexOfModel(const std::string& model) {
    const std::string_view prefix = std::string_view(model).substr(0, MODEL_LENGTH);
    return static_cast<int>(std::find(MODELS.begin(), MODELS.end(), prefix) - MODELS.begin());
}

SysProp<std::string>& gModelProp = SysPropWatcher::createSysProp<std::string>("ro.product.model", {});

bool isSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Reads the text up to the first NUL byte or the end of the line, at most 255 bytes. fgets() would give the
/// same text but read to the end of the file, which costs the kernel nearly as much again.
std::string firstText(std::FILE* file) {
    std::array<char, 255> text{};
    std::size_t length = 0;
    while (length < text.size()) {
        const int c = getc_unlocked(file);  // NOLINT(concurrency-mt-unsafe): nobody else has the stream
        if (c == EOF || c == '\0' || c == '\n') {
            break;
        }
        text[length++] = static_cast<char>(c);
    }
    return {text.data(), length};
}

char toCapital(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

int deviceModel = indexOfModel(gModelProp.getValue());

std::string getProcessName() {
    static constexpr const char* PATH = "/proc/self/cmdline";
    std::string name;
    if (const File file{PATH}) {
        name = firstText(file.get());
    } else {
        // These two messages must keep their place: people filter the log for it.
        // NOLINTNEXTLINE(concurrency-mt-unsafe): strerror keeps its text per thread on both platforms
        KORDANIX_LOG_ERROR("Faield to open %s,  error: %s", "SystemInfoHelper.h", "getProcessName", 47, PATH,
                           std::strerror(errno));
    }
    trim(name);
    return name;
}

void trim(std::string& text) {
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isSpace));
    text.erase(std::find_if_not(text.rbegin(), text.rend(), isSpace).base(), text.end());
}

int checkVendor() {
    const int known = sGpuVendorCache.load(std::memory_order_relaxed);
    if (known != Vendor::UNKNOWN) {
        return known;
    }
    const File file("/sys/kernel/gpu/gpu_model");
    if (!file) {
        KORDANIX_LOG_ERROR("Fail to read Vendor", "SystemInfoHelper.h", "checkVendor", 66);
        return Vendor::UNKNOWN;
    }
    std::array<char, 50> line{};
    if (std::fscanf(file.get(), "%49[^\n]", line.data()) != 1) {
        return Vendor::UNKNOWN;
    }
    std::transform(line.begin(), line.end(), line.begin(), toCapital);
    const std::string_view model(line.data());
    int vendor = Vendor::UNKNOWN;
    if (model.find("MALI") != std::string_view::npos) {
        vendor = Vendor::MALI;
    } else if (model.find("ADRENO") != std::string_view::npos) {
        vendor = Vendor::ADRENO;
    }
    sGpuVendorCache.store(vendor, std::memory_order_relaxed);
    return vendor;
}

}  // namespace utils
