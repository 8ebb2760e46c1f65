#include "android/AndroidCommand.h"

#include "Diagnostic.h"
#include "android/Adb.h"
#include "android/Phone.h"
#include "android/Verbs.h"
#include "run/ProgramFile.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace control {

namespace {

constexpr std::size_t ANY = std::numeric_limits<std::size_t>::max();

using android::Session;

/// Prints what a verb returned, if it is not empty.
template <std::string (*VERB)(const Session&)>
ExitCode orFail(const Session& session) {
    return failUnlessEmpty(VERB(session), session.err);
}

struct Row {
    const char* name;
    std::size_t leastWords;
    std::size_t mostWords;
    const char* expected;  ///< after the verb
    ExitCode (*run)(const Session&);
};

constexpr Row VERBS[] = {
    {"install", 0, 0, "no words after it", orFail<android::install>},
    {"start", 0, ANY, "NAME VALUE in turns", orFail<android::start>},
    {"set", 2, ANY, "NAME VALUE in turns", orFail<android::set>},
    {"dump", 0, 0, "no words after it", orFail<android::dump>},
    {"capture", 0, 0, "no words after it", orFail<android::capture>},
    {"picture", 0, 1, "OUT.png", orFail<android::picture>},
    {"pull", 0, 1, "FOLDER", orFail<android::pull>},
    {"report", 0, 1, "OUT.html", android::report},
    {"off", 0, 0, "no words after it", orFail<android::off>},
    {"doctor", 0, 0, "no words after it", orFail<android::examine>},
};

bool isPackageName(const std::string& text) {
    return !text.empty() && text.front() != '-' && text.front() != '.' &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.") ==
               std::string::npos;
}

/// Returns an empty text, or what is wrong with the words.
std::string checkWords(const AndroidOptions& options, const Row* verb) {
    if (!isPackageName(options.package)) {
        return "'" + options.package + "' is not the name of an Android package, such as com.example.game";
    }
    if (verb == std::end(VERBS)) {
        return "android has no verb '" + options.verb + "'; see 'kordanixctl android --help'";
    }
    const std::size_t count = options.words.size();
    if (count < verb->leastWords || count > verb->mostWords) {
        return "android " + options.verb + " expects " + verb->expected;
    }
    std::vector<Assignment> ignored;
    return verb->mostWords == ANY ? android::readAssignments(options.words, ignored) : std::string();
}

}  // namespace

ExitCode runAndroid(const AndroidOptions& options, std::ostream& out, std::ostream& err) {
    const Row* const verb = std::find_if(std::begin(VERBS), std::end(VERBS),
                                         [&](const Row& row) { return options.verb == row.name; });
    std::string error = checkWords(options, verb);
    if (!error.empty()) {
        return fail(error, err, USAGE_ERROR);
    }
    const ProgramFile program = findProgram("adb");
    if (program.result != SUCCESS && !options.isShown) {
        return fail(
            "there is no program 'adb' in PATH: install the package adb, or add the folder platform-tools of "
            "an "
            "Android SDK to PATH",
            err);
    }
    const Adb adb(program.path, options.serial, options.isShown ? &out : nullptr);
    const Phone phone(adb, options.package);
    std::ostream nowhere(nullptr);
    return verb->run({options, phone, options.isShown ? nowhere : out, err});
}

}  // namespace control
