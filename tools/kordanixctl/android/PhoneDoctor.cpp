#include "android/Verbs.h"
#include "settings/PropertyTable.h"

#include <iterator>
#include <sstream>

namespace control::android {

namespace {

constexpr int FIRST_WITH_METADATA = 30;  // Android 11
constexpr std::size_t LOG_LINES = 10;

/// Prints what was found, a line for each thing.
class Findings {
public:
    explicit Findings(std::ostream& out) : mOut(out) {}

    void good(const std::string& text) { mOut << "ok  " << text << '\n'; }
    void bad(const std::string& text) {
        mOut << "!!  " << text << '\n';
        ++mCount;
    }
    void note(bool isGood, const std::string& text, const std::string& advice) {
        isGood ? good(text) : bad(text + ": " + advice);
    }
    std::size_t countBad() const { return mCount; }

private:
    std::ostream& mOut;
    std::size_t mCount = 0;
};

std::string verb(const Session& session, const std::string& name) {
    return "'kordanixctl android " + session.options.package + ' ' + name + '\'';
}

void examineApplication(const Session& session, const Application& application, Findings& findings) {
    const std::string& package = session.options.package;
    findings.good("the device has Android's API level " + std::to_string(application.level));
    findings.good(package + " is installed" +
                  (application.abi.empty() ? ", without native libraries" : ", for " + application.abi));
    findings.note(application.isDebuggable,
                  package + (application.isDebuggable ? " is debuggable" : " is not debuggable"),
                  application.level >= FIRST_WITH_METADATA
                      ? "install a debug build, or one whose manifest has the meta-data "
                        "com.android.graphics.injectLayers.enable"
                      : "install a debug build");
}

std::string examineSettings(const Session& session, Findings& findings) {
    const std::string expected[] = {"1", session.options.package, GLES_FILE, VULKAN_NAME};
    std::string error;
    for (std::size_t i = 0; i < std::size(expected) && error.empty(); ++i) {
        std::string value;
        error = session.phone.run({"settings", "get", "global", SETTINGS[i]}, value);
        findings.note((':' + value + ':').find(':' + expected[i] + ':') != std::string::npos,
                      std::string("the setting ") + SETTINGS[i] + " is " + value,
                      verb(session, "start") + " makes it " + expected[i]);
    }
    return error;
}

void examineFiles(const Session& session, Findings& findings) {
    const Answer files = session.phone.runAs({"ls"});
    const Answer apk = session.phone.adb().shell({"pm", "path", LAYER_PACKAGE});
    std::string found = apk.out.find("package:") != std::string::npos ? " the APK" : "";
    for (const char* const name : {GLES_FILE, VULKAN_FILE}) {
        const std::string line = std::string(name) + '\n';
        found += ('\n' + files.out).find('\n' + line) != std::string::npos ? std::string(" ") + name : "";
    }
    findings.note(!found.empty(), "the layer is there:" + (found.empty() ? " no" : found),
                  verb(session, "install") + " brings it");
}

std::string examineProperties(const Session& session, Findings& findings) {
    std::string values[3];
    const char* const names[] = {"status", "proc", "api"};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        std::string error = session.phone.run({"getprop", std::string(PREFIX) + names[i]}, values[i]);
        if (!error.empty()) {
            return error;
        }
    }
    findings.note(values[0] == "true", "the overlay's property status is '" + values[0] + '\'',
                  verb(session, "set status true") + " switches it on");
    findings.note(values[1].substr(0, values[1].find(':')) == session.options.package,
                  "its property proc is '" + values[1] + '\'', verb(session, "start") + " sets it");
    findings.good("it is for " + std::string(values[2] == "1" ? "Vulkan" : "OpenGL ES") + "; " +
                  verb(session, values[2] == "1" ? "set api 0" : "set api 1") + " is for the other");
    return {};
}

std::string examineProcess(const Session& session, Findings& findings) {
    std::string process;
    std::string error = session.phone.findProcess(process);
    if (!error.empty()) {
        return error;
    }
    findings.note(
        !process.empty(),
        session.options.package + (process.empty() ? " is not running" : " runs as process " + process),
        verb(session, "start") + " starts it");
    if (process.empty()) {
        return {};
    }
    const Answer maps = session.phone.runAs({"cat", "/proc/" + process + "/maps"});
    std::string loaded;
    for (const char* const name : {GLES_FILE, VULKAN_FILE}) {
        loaded += maps.out.find(name) != std::string::npos ? std::string(" ") + name : "";
    }
    if (maps.status == 0) {
        findings.note(!loaded.empty(), "it has loaded" + (loaded.empty() ? " no layer" : loaded),
                      verb(session, "start") +
                          " starts it anew; 'adb logcat -s GraphicsEnvironment libEGL vulkan' "
                          "may say why the device did not load it");
    }
    const Answer log = session.phone.adb().shell(
        {"logcat", "-d", "-t", std::to_string(LOG_LINES), "--pid=" + process, "-s", "Kordanix", "Ostra"});
    session.out << "What the overlay wrote into the device's log:\n" << log.out;
    return {};
}

}  // namespace

std::string examine(const Session& session) {
    Application application;
    std::string error = session.phone.examine(application);
    if (!error.empty()) {
        return error;
    }
    Findings findings(session.out);
    examineApplication(session, application, findings);
    examineFiles(session, findings);
    error = examineSettings(session, findings);
    error = error.empty() ? examineProperties(session, findings) : error;
    error = error.empty() ? examineProcess(session, findings) : error;
    if (error.empty() && findings.countBad() > 0 && !session.phone.adb().isShowing()) {
        error = "the overlay cannot be shown; see the lines that begin with !!";
    }
    return error;
}

}  // namespace control::android
