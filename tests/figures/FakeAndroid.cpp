// What an application finds in Android's libandroid.so, as the environment says: $FAKE_HEADROOM is a number
// or an error
// ("E95"), $FAKE_STATUS a number.

#include <cstdint>
#include <cstdlib>

namespace {

const char* said(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr ? text : "";
}

int gManager = 0;

}  // namespace

extern "C" {

int ASystemHealth_getGpuHeadroomMinIntervalMillis(std::int64_t* milliseconds) {
    *milliseconds = 2000;
    return 0;
}

int ASystemHealth_getGpuHeadroom(const void* /*parameters*/, float* headroom) {
    const char* const text = said("FAKE_HEADROOM");
    *headroom = std::strtof(text, nullptr);
    return *text == 'E' ? std::atoi(text + 1) : 0;
}

void* AThermal_acquireManager() {
    return &gManager;
}

int AThermal_getCurrentThermalStatus(void* manager) {
    return manager == &gManager ? std::atoi(said("FAKE_STATUS")) : -1;
}
}
