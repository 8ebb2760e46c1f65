#include "android/AndroidCommand.h"
#include "cli/Verbs.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

constexpr const char* WHAT_THERE_IS =
    "VERB is one of:\n"
    "  install              bring the layer to the application: --layers DIR or --apk FILE\n"
    "  start [NAME VALUE].. load it at every start of the application, set properties, start it anew\n"
    "  set NAME VALUE ..    set properties and publish them together, as 'kordanixctl set' does\n"
    "  dump                 start a frame dump; once more ends it\n"
    "  capture              show the render passes of one frame\n"
    "  picture [OUT.png]    save the next frame with the overlay in it\n"
    "  pull [FOLDER]        fetch dumps and pictures, into FOLDER/kordanix\n"
    "  report [OUT.html]    fetch them, and turn the newest dump into a page\n"
    "  off                  remove it all: settings, properties, files\n"
    "  doctor               say what is in the way of the overlay\n"
    "The application has to be debuggable. Exit status: 0 done, 1 failed, 2 not understood.";

}  // namespace

void addAndroidVerb(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<AndroidOptions>();
    CLI::App* const verb =
        addVerb(app, "android", "Put the overlay over an application on an Android device, through adb");
    setUsage(*verb, "android [OPTIONS] PACKAGE VERB [WORDS]...");
    verb->footer(WHAT_THERE_IS);
    verb->add_option("PACKAGE", options->package, "The application's package, such as com.example.game")
        ->type_name("")
        ->required();
    verb->add_option("VERB", options->verb, "What to do")->type_name("")->required();
    verb->add_option("WORDS", options->words, "What the verb needs")->type_name("");
    verb->add_option("--serial", options->serial, "The device, as 'adb devices' names it")
        ->type_name("SERIAL");
    verb->add_flag("--print", options->isShown, "Show the commands of adb instead of running them");
    verb->add_option("--layers", options->layers,
                     "Folder with the layer's files in a folder for each ABI (arm64-v8a, armeabi-v7a)")
        ->type_name("DIR");
    verb->add_option("--apk", options->apk, "The layer as an APK, see scripts/android-apk.sh")
        ->type_name("FILE");
    verb->add_option("--abi", options->abi, "Install the layer for this ABI instead of the application's")
        ->type_name("ABI");
    verb->add_option("--seconds", options->seconds, "How long to wait for a dump to begin or for a picture")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(isSeconds());
    verb->add_flag("--keep-dumps", options->keepsDumps, "'off' leaves dumps and pictures on the device");
    verb->callback([=, &invocation] {
        invocation.address = Invocation::Address::NONE;
        if (invocation.process) {
            throw CLI::ParseError("android: a device's processes have no --process", USAGE_ERROR);
        }
        invocation.action = [=] { return runAndroid(*options, std::cout, std::cerr); };
    });
}

}  // namespace control
