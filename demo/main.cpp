#include "Demo.h"
#include "Options.h"
#include "Restart.h"

int main(int argc, char** argv) {
    demo::Options options;
    int exitCode = 0;
    if (!demo::parseOptions(argc, argv, options, exitCode)) {
        return exitCode;
    }
    if (!demo::restartIfNeeded(argv, options, exitCode)) {
        return exitCode;
    }
    return demo::run(options);
}
