#include "DumpCommands.h"

#include "Complaint.h"
#include "DumpReader.h"
#include "Report.h"
#include "Trace.h"

#include <cerrno>
#include <fstream>
#include <functional>
#include <system_error>

namespace control {

namespace {

/// Writes a dump to a stream. Returns an empty text, or why nothing was written.
using DumpWriter = std::function<std::string(const Dump&, std::ostream&)>;

ExitCode convert(const std::string& folder, const std::string& path, const DumpWriter& write,
                 std::ostream& err) {
    Dump dump;
    const std::string error = readDump(folder, dump);
    if (!error.empty()) {
        return fail(error, err);
    }
    const std::string losses = describeLosses(dump);
    if (!losses.empty()) {
        complain(folder + ": " + losses, err);
    }
    errno = 0;
    std::ofstream file(path, std::ios::binary);
    if (!file) {
        return fail(path + ": cannot be written: " + std::generic_category().message(errno), err);
    }
    const std::string reason = write(dump, file);
    file.close();
    if (!reason.empty()) {
        return fail(folder + ": " + reason, err);
    }
    return file ? SUCCESS : fail(path + ": could not be written to its end", err);
}

}  // namespace

ExitCode makeTrace(const std::string& folder, const std::string& path, std::ostream& err) {
    const DumpWriter write = [](const Dump& dump, std::ostream& out) {
        writeTrace(dump, out);
        return std::string();
    };
    return convert(folder, path, write, err);
}

ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& err) {
    return convert(folder, path, writeReport, err);
}

}  // namespace control
