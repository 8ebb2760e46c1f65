#include "conversions/DumpCommands.h"

#include "Diagnostic.h"
#include "conversions/ReplacedFile.h"
#include "dumps/DumpFolder.h"
#include "dumps/DumpReader.h"
#include "dumps/Trace.h"
#include "dumps/report/Report.h"

#include <filesystem>
#include <system_error>

namespace control {

namespace {

/// Writes a dump to a stream. Returns an empty text, or why it wrote nothing.
using DumpWriter = std::string (*)(const dumps::Dump&, std::ostream&);

ExitCode convert(const std::string& folder, const std::string& path, DumpWriter write, std::ostream& out,
                 std::ostream& err) {
    std::string error;
    std::error_code ignored;
    const bool isLog = std::filesystem::is_regular_file(folder, ignored);
    const std::string found = isLog ? folder : dumps::findDump(folder, error);
    if (found.empty()) {
        return fail(error, err);
    }
    if (found != folder) {
        out << "The newest dump: " << found << '\n';
    }
    for (const char* const name : {"frames.csv", "passes.csv", "about.csv"}) {
        if (isSameFile(path, found + '/' + name) || isFileNamed(path, name)) {
            return fail(path + ": is a file of a dump, which is not replaced", err);
        }
    }
    if (isLog && isSameFile(path, folder)) {
        return fail(path + ": is the log itself, which is not replaced", err);
    }
    dumps::Dump dump;
    error = isLog ? dumps::readLog(found, dump) : dumps::readDump(found, dump);
    if (!error.empty()) {
        return fail(error, err);
    }
    const std::string losses = dumps::describeLosses(dump);
    if (!losses.empty()) {
        printDiagnostic(found + ": " + losses, err);
    }
    ReplacedFile file(path);
    error = file.open();
    if (!error.empty()) {
        return fail(error, err);
    }
    const std::string reason = write(dump, file.stream());
    return failUnlessEmpty(reason.empty() ? file.commit() : found + ": " + reason, err);
}

}  // namespace

ExitCode makeTrace(const std::string& folder, const std::string& path, std::ostream& out, std::ostream& err) {
    const DumpWriter write = [](const dumps::Dump& dump, std::ostream& trace) {
        dumps::writeTrace(dump, trace);
        return std::string();
    };
    return convert(folder, path, write, out, err);
}

ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& out,
                    std::ostream& err) {
    return convert(folder, path, dumps::writeReport, out, err);
}

}  // namespace control
