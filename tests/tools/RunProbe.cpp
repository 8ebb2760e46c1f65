#include <ostra/Ostra.h>
#include <unistd.h>

#include <cstdio>

/// Stands for a program with the overlay. Says "ready" when it listens, and ends when it is sent to the
/// background.
int main() {
    alarm(60);  // should the test be gone
    Ostra::registerAppBecomeBackgroundListener([] { _exit(7); });
    std::puts("ready");
    std::fflush(stdout);
    while (true) {
        pause();
    }
}
