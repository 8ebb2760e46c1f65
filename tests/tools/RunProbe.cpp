#include "ostra/PictureRequest.h"

#include <ostra/Ostra.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

/// Stands for a program with the overlay: run_probe ANSWER, where the answer to a request for a
/// picture is "picture", "garbage", "failure" or "nothing". Says "ready" when it listens.
int main(int argc, char** argv) {
    const std::string answer = argc > 1 ? argv[1] : "nothing";
    alarm(60);  // should the test be gone
    Ostra::registerAppBecomeBackgroundListener([] { _exit(7); });
    std::puts("ready");
    std::fflush(stdout);
    while (true) {
        const auto path = answer == "nothing" ? std::nullopt : platform::takePictureRequest();
        if (path && answer == "failure") {
            unlink(path->c_str());
        } else if (path) {
            std::ofstream(*path + ".part")
                << (answer == "garbage" ? "P7\nWIDTH 2\n"
                                        : "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE "
                                          "RGB_ALPHA\nENDHDR\nabcdefgh");
            std::rename((*path + ".part").c_str(), path->c_str());
        }
        usleep(1000);
    }
}
