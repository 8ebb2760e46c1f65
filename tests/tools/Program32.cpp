// A 32-bit program with a library in the place of OpenGL's, for machines that have no 32-bit OpenGL. Swaps as
// one that is linked with it does and as one that looks its function up, then becomes the program it is
// given.
#include <dlfcn.h>
#include <unistd.h>

extern "C" void glXSwapBuffers(void* display, unsigned long drawable);

#ifdef PROGRAM32_LIBRARY
void glXSwapBuffers(void*, unsigned long) {}
#else
int main(int, char** words) {
    glXSwapBuffers(nullptr, 1);
    void* const found = dlsym(RTLD_DEFAULT, "glXSwapBuffers");
    reinterpret_cast<decltype(&glXSwapBuffers)>(found)(nullptr, 1);
    return words[1] == nullptr ? 3 : execvp(words[1], words + 1);
}
#endif
