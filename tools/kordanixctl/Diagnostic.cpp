#include "Diagnostic.h"

namespace control {

void printDiagnostic(std::string_view text, std::ostream& err) {
    err << "kordanixctl: " << text << '\n';
}

ExitCode fail(std::string_view error, std::ostream& err, ExitCode code) {
    printDiagnostic(error, err);
    return code;
}

ExitCode failUnlessEmpty(std::string_view error, std::ostream& err) {
    return error.empty() ? SUCCESS : fail(error, err);
}

}  // namespace control
