#include "DumpCommands.h"

#include "Complaint.h"
#include "DumpFolder.h"
#include "DumpReader.h"
#include "ReplacedFile.h"
#include "Report.h"
#include "Trace.h"

namespace control {

namespace {

/// Writes a dump to a stream. Returns an empty text, or why nothing was written.
using DumpWriter = std::string (*)(const Dump&, std::ostream&);

ExitCode convert(const std::string& folder, const std::string& path, DumpWriter write, std::ostream& out,
                 std::ostream& err) {
    std::string error;
    const std::string found = findDump(folder, error);
    if (found.empty()) {
        return fail(error, err);
    }
    if (found != folder) {
        out << "The newest dump: " << found << '\n';
    }
    for (const char* const name : {"/frames.csv", "/passes.csv"}) {
        if (isSameFile(path, found + name)) {
            return fail(path + ": is a file of the dump itself, which is not replaced", err);
        }
    }
    Dump dump;
    error = readDump(found, dump);
    if (!error.empty()) {
        return fail(error, err);
    }
    const std::string losses = describeLosses(dump);
    if (!losses.empty()) {
        complain(found + ": " + losses, err);
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
    const DumpWriter write = [](const Dump& dump, std::ostream& trace) {
        writeTrace(dump, trace);
        return std::string();
    };
    return convert(folder, path, write, out, err);
}

ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& out,
                    std::ostream& err) {
    return convert(folder, path, writeReport, out, err);
}

}  // namespace control
