#include "Diagnostic.h"
#include "android/AdbTrouble.h"
#include "android/Verbs.h"
#include "conversions/DumpCommands.h"

#include <filesystem>
#include <system_error>

namespace control::android {

namespace {

/// Fetches the application's dumps and pictures into a folder, as FOLDER/kordanix.
std::string fetch(const Session& session, const std::string& folder) {
    const Phone& phone = session.phone;
    int ignored = 0;
    std::string error = phone.findLevel(ignored);
    if (!error.empty()) {
        return error;
    }
    // What goes wrong on the way of the archive would be taken for a part of it, so it is tried before.
    const std::vector<std::string> look = {"ls", std::string(FILES) + '/' + OWN_FOLDER};
    const Answer there = phone.runAs(look);
    if (there.status != 0) {
        return isFileMissing(there)
                   ? session.options.package + " has no dumps and no pictures; 'kordanixctl android " +
                         session.options.package + " dump' makes one"
                   : phone.describe(there, look);
    }
    std::error_code failure;
    if (!phone.adb().isShowing()) {
        std::filesystem::create_directories(folder, failure);
    }
    if (failure) {
        return folder + ": " + failure.message();
    }
    const std::vector<std::string> words = {"run-as",  session.options.package, "tar", "c", "-C", FILES,
                                            OWN_FOLDER};
    const Answer answer = phone.adb().unpack(words, folder);
    return answer.status == 0 ? std::string() : phone.describe(answer, words);
}

}  // namespace

std::string pull(const Session& session) {
    const std::string folder = session.options.words.empty() ? "." : session.options.words.front();
    std::string error = fetch(session, folder);
    if (error.empty()) {
        session.out << "Fetched into " << folder << '/' << OWN_FOLDER << '\n';
    }
    return error;
}

ExitCode report(const Session& session) {
    const std::string path =
        session.options.words.empty() ? session.options.package + ".html" : session.options.words.front();
    const ExitCode fetched = failUnlessEmpty(fetch(session, "."), session.err);
    if (session.phone.adb().isShowing()) {
        session.phone.adb().explain("kordanixctl report " + std::string(OWN_FOLDER) + ' ' + path);
        return fetched;
    }
    const ExitCode made =
        fetched == SUCCESS ? makeReport(OWN_FOLDER, path, session.out, session.err) : fetched;
    if (made == SUCCESS) {
        session.out << "The report is " << path << '\n';
    }
    return made;
}

}  // namespace control::android
