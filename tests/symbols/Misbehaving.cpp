// A library that breaks every promise that check_library.sh checks, one way each.

#include <cstdlib>

namespace gui {
extern int gForgotten;
int gForgotten = 1;
}  // namespace gui

namespace elsewhere {

void giveUp();
void giveUp() {
    std::abort();
}

extern const unsigned char BALLAST[200 * 1024];
const unsigned char BALLAST[200 * 1024] = {1};

}  // namespace elsewhere
