#include "serve/ServeCommand.h"

#include "Diagnostic.h"
#include "overlays/OverlayState.h"
#include "processes/EndSignals.h"
#include "serve/PageServer.h"
#include "serve/ServedProgram.h"
#include "watch/WatchTarget.h"

#include <chrono>
#include <string>

namespace control {

namespace {

constexpr std::chrono::milliseconds LOOK_PERIOD{250};

}  // namespace

ExitCode servePage(std::optional<pid_t> process, int port, std::ostream& out, std::ostream& err) {
    WatchTarget target;
    std::string error = chooseWatchTarget(process, target);
    if (!error.empty()) {
        return fail(error, err);
    }
    const EndSignals signals;  // before the server's threads, which inherit it
    ServedProgram program(target);
    PageServer server(program);
    error = program.open();
    error = error.empty() ? server.start(port) : error;
    if (!error.empty()) {
        return fail(error, err);
    }
    out << server.address() << std::endl;
    const std::string who = describeProcess(target.process, baseName(target.name));
    printDiagnostic("open this address in a browser; it shows " + who + " until that ends, or until Ctrl-C",
                    err);
    while (signals.wait(LOOK_PERIOD)) {
        if (program.hasEnded()) {
            printDiagnostic(who + " has ended", err);
            break;
        }
    }
    return SUCCESS;
}

}  // namespace control
