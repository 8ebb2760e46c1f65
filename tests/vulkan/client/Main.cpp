// A Vulkan program that does what its arguments say. First how it is set up (see Client.h):
//   headless  format=unorm|srgb|rgba|ten|hdr|half  mode=N  layers=N  swapchains=N  family=N  queues=N minor=N
//   flight=N turn=N protected  shared  nowait  chain=regions|unknown  threads=N (as many of these programs,
//   each in its own thread)
// and then, one after another:
//   present N    N frames of one colour
//   apart N      N frames of each swapchain, each in a thread and on a queue of its own
//   passes N     N frames with render passes of every kind
//   resize W H   the windows get that size, and the swapchains are made anew from the old ones
//   renew        the swapchains are destroyed and made anew
//   surfaces     and their surfaces too
//   nulls        calls with what may be null
//   random SEED  30 of these, as the seed decides
// Exits with 1, and says why, when a call fails.

#include "Client.h"

#include <iostream>
#include <map>
#include <random>
#include <string>
#include <thread>

namespace {

using client::Client;
using client::Setup;
using Words = std::vector<std::string>;

const std::map<std::string, VkSurfaceFormatKHR> FORMATS = {
    {"unorm", {VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}},
    {"srgb", {VK_FORMAT_B8G8R8A8_SRGB, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}},
    {"rgba", {VK_FORMAT_R8G8B8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}},
    {"ten", {VK_FORMAT_A2B10G10R10_UNORM_PACK32, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}},
    {"hdr", {VK_FORMAT_A2B10G10R10_UNORM_PACK32, VK_COLOR_SPACE_HDR10_ST2084_EXT}},
    {"half", {VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT}}};

/// Takes a word of the setup; false for any other.
bool setUp(const std::string& word, Setup& setup, unsigned int& threads) {
    const std::size_t middle = word.find('=');
    const std::string name = word.substr(0, middle);
    const std::string value = middle == std::string::npos ? "" : word.substr(middle + 1);
    const std::map<std::string, std::uint32_t*> numbers = {
        {"layers", &setup.layers}, {"swapchains", &setup.swapchains},
        {"family", &setup.family}, {"queues", &setup.queues},
        {"minor", &setup.minor},   {"turn", &setup.turn},
        {"flight", &setup.flight}, {"threads", &threads}};
    if (const auto number = numbers.find(name); number != numbers.end()) {
        *number->second = static_cast<std::uint32_t>(std::stoul(value));
    } else if (name == "format") {
        setup.format = FORMATS.at(value);
    } else if (name == "mode") {
        setup.mode = static_cast<VkPresentModeKHR>(std::stoul(value));
    } else if (name == "chain") {
        setup.chain = value;
    } else if (name == "headless") {
        setup.isHeadless = true;
    } else if (name == "shared") {
        setup.isShared = true;
    } else if (name == "protected") {
        setup.isProtected = true;
    } else if (name == "nowait") {
        setup.isWaiting = false;
    } else {
        return false;
    }
    return true;
}

void runRandom(Client& client, unsigned int seed) {
    std::minstd_rand random(seed);
    const auto below = [&random](unsigned int end) { return static_cast<unsigned int>(random() % end); };
    for (int i = 0; i < 30; ++i) {
        switch (below(10)) {
            case 0:
            case 1: {
                const unsigned int width = 1 + below(700);
                client.resize(width, 1 + below(500));
                break;
            }
            case 2:
                client.renew(below(2) == 0);
                break;
            default:
                client.present();
        }
    }
}

bool act(Client& client, const Words& words, std::size_t& i) {
    const auto number = [&] { return static_cast<unsigned int>(std::stoul(words.at(++i))); };
    const std::string& word = words[i];
    if (word == "present" || word == "passes") {
        for (unsigned int left = number(); left != 0; --left) {
            if (word == "present") {
                client.present();
            } else {
                client.presentPasses();
            }
        }
    } else if (word == "apart") {
        client.presentApart(static_cast<int>(number()));
    } else if (word == "resize") {
        const unsigned int width = number();
        client.resize(width, number());
    } else if (word == "renew" || word == "surfaces") {
        client.renew(word == "surfaces");
    } else if (word == "nulls") {
        client.callWithNulls();
    } else if (word == "random") {
        runRandom(client, number());
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const Words words(argv + 1, argv + argc);
    Setup setup;
    unsigned int threads = 1;
    std::size_t first = 0;
    while (first < words.size() && setUp(words[first], setup, threads)) {
        ++first;
    }
    XInitThreads();
    const auto run = [&] {
        Client client(setup);
        for (std::size_t i = first; i < words.size(); ++i) {
            const std::string& word = words[i];
            if (!act(client, words, i)) {
                std::cerr << word << ": not understood\n";
                std::exit(2);  // NOLINT(concurrency-mt-unsafe): it is over
            }
        }
    };
    std::vector<std::thread> others;
    for (unsigned int i = 1; i < threads; ++i) {
        others.emplace_back(run);
    }
    run();
    for (std::thread& other : others) {
        other.join();
    }
    std::cout << "done\n";
    return 0;
}
