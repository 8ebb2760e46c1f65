// Loads the layers for applications as a device's loaders do, asks their entry points, and lets a frame of a
// program pass through where there is no driver: what runs before a driver is needed, on any processor.
// Usage: load_layers LIBKORDANIXGLES LIBVKLAYER

#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/// VkLayerProperties.
struct LayerProperties {
    std::array<char, 256> name;
    std::array<std::uint32_t, 2> versions;
    std::array<char, 256> description;
};

int gLayer = 0;
int gSwaps = 0;
int gQuestions = 0;

void require(bool isTrue, const char* what) {
    if (!isTrue) {
        std::fprintf(stderr, "the layers: %s\n", what);
        std::_Exit(1);
    }
}

void* open(const char* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    require(library != nullptr, path);
    return library;
}

template <typename Function>
Function find(void* library, const char* name) {
    void* const found = dlsym(library, name);
    require(found != nullptr, name);
    return reinterpret_cast<Function>(found);
}

/// A driver's function, which does nothing.
void* nothing() {
    ++gQuestions;
    return nullptr;
}

unsigned int swap(void* /*display*/, void* surface) {
    ++gSwaps;
    return surface == &gLayer ? 1 : 0;
}

void* next(void* layer, const char* name) {
    require(layer == &gLayer, "another layer's number");
    return std::strcmp(name, "eglSwapBuffers") == 0 ? reinterpret_cast<void*>(swap)
                                                    : reinterpret_cast<void*>(nothing);
}

void loadGles(const char* path) {
    void* const library = open(path);
    find<void (*)(void*, void* (*)(void*, const char*))>(library, "AndroidGLESLayer_Initialize")(&gLayer,
                                                                                                 next);
    const auto get = find<void* (*)(const char*, void*)>(library, "AndroidGLESLayer_GetProcAddress");
    for (const char* const name : {"eglSwapBuffersWithDamageKHR", "eglDestroyContext", "eglTerminate",
                                   "glBindFramebuffer", "eglQuerySurface", "eglSetDamageRegionKHR"}) {
        require(get(name, next(&gLayer, name)) != reinterpret_cast<void*>(nothing), name);
    }
    require(get("glEnable", next(&gLayer, "glEnable")) == reinterpret_cast<void*>(nothing), "glEnable");
    const auto wrapped = reinterpret_cast<unsigned int (*)(void*, void*)>(
        get("eglSwapBuffers", reinterpret_cast<void*>(swap)));
    require(wrapped != swap, "eglSwapBuffers");
    for (int frame = 1; frame <= 3; ++frame) {
        require(wrapped(&gLayer, &gLayer) == 1 && gSwaps == frame, "a swap is passed on once");
    }
    require(gQuestions > 0, "what is drawn on was not asked for");
}

/// Opened, asked, closed, and opened again.
void loadVulkan(const char* path) {
    for (int round = 0; round < 2; ++round) {
        void* const library = open(path);
        std::array<LayerProperties, 2> layers = {};
        std::uint32_t count = 1;
        find<int (*)(std::uint32_t*, void*)>(library, "vkEnumerateInstanceLayerProperties")(&count,
                                                                                            &layers[0]);
        find<int (*)(void*, std::uint32_t*, void*)>(library, "vkEnumerateDeviceLayerProperties")(
            nullptr, &count, &layers[1]);
        require(count == 1 && std::strcmp(layers[0].name.data(), "VK_LAYER_KORDANIX_overlay") == 0 &&
                    std::memcmp(&layers[0], &layers[1], sizeof(LayerProperties)) == 0,
                "the properties");
        const auto get = find<void* (*)(void*, const char*)>(library, "vkGetInstanceProcAddr");
        require(get(nullptr, "vkCreateInstance") != nullptr && get(nullptr, "vkNoSuch") == nullptr,
                "its functions");
        dlclose(library);
    }
}

}  // namespace

int main(int count, char** files) {
    require(count == 3, "two files");
    loadGles(files[1]);
    loadVulkan(files[2]);
    std::puts("both layers are loaded and answer");
    std::_Exit(std::fflush(stdout));
}
