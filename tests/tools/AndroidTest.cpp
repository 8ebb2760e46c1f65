#include "RunFixture.h"
#include "android/Phone.h"
#include "android/ShellWord.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace control {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string GAME = "com.example.game";

/// A phone that a shell script plays, see phone/adb, with one debuggable application on it.
class AndroidTest : public RunFixture {
protected:
    AndroidTest() {
        setenv("PHONE", mHome.path().c_str(), 1);
        setenv("ADB", PHONE_ADB, 1);
        EXPECT_TRUE(mHome.shell(
            "mkdir -p tools bin properties settings packages running data/com.example.game data/local/tmp "
            "layers/arm64-v8a layers/armeabi-v7a; ln -s \"$ADB\" tools/adb\n"
            "for p in getprop setprop settings dumpsys pm cmd am pidof logcat run-as cp rm cat; do\n"
            "  ln -s \"$ADB\" bin/$p\ndone\n"
            "echo 29 >properties/ro.build.version.sdk; echo arm64-v8a >properties/ro.product.cpu.abi\n"
            "for a in arm64-v8a armeabi-v7a; do for l in libKordanixGles libVkLayer_Kordanix; do\n"
            "  echo $l of $a >layers/$a/$l.so\ndone; done; echo >layers.apk"));
        setPackage("arm64-v8a", "DEBUGGABLE HAS_CODE");
        setenv("PATH", (mHome.path("tools:") + std::getenv("PATH")).c_str(), 1);
    }

    void setPackage(const std::string& abi, const std::string& flags) const {
        std::ofstream(mHome.path("packages/" + GAME))
            << "Key Set Manager:\n  [" << GAME << "]\nPackages:\n  Package [" << GAME
            << ".other] (1):\n    primaryCpuAbi=x86\n  Package [" << GAME
            << "] (2):\n    primaryCpuAbi=" << abi << "\n    flags=[ " << flags << " ]\n";
    }

    /// Runs a verb on the game; `before` is a shell's beginning of the line.
    support::Outcome android(const std::string& words, const std::string& before = {}) const {
        return run(before + " $CTL android " + GAME + ' ' + words);
    }

    std::string read(const std::string& name) const { return support::readFile(mHome.path(name)); }
    std::string property(const std::string& name) const { return read("properties/debug.kordanix." + name); }
};

TEST_F(AndroidTest, TheOverlayComesIsSetAndGoesWithoutATrace) {
    const std::string data = "data/" + GAME + '/';
    ASSERT_TRUE(mHome.shell("mkdir -p " + data + "files; cp -r properties before; echo 1 >settings/other"));
    for (const char* const abi : {"armeabi-v7a", "null", "arm64-v8a"}) {
        setPackage(abi, "DEBUGGABLE HAS_CODE");
        EXPECT_EQ(android("install --layers layers").err, "");
        const std::string expected = abi == std::string("null") ? "arm64-v8a" : abi;
        EXPECT_EQ(read(data + "libKordanixGles.so"), "libKordanixGles of " + expected + '\n');
        EXPECT_EQ(read(data + "libVkLayer_Kordanix.so"), "libVkLayer_Kordanix of " + expected + '\n');
    }
    EXPECT_EQ(android("start api 1 bg_color '#800084ff'").err, "");
    EXPECT_EQ(property("status") + property("proc") + property("api"), "true" + GAME + '1');
    EXPECT_EQ(property("bg_color"), "2147517695");
    EXPECT_EQ(read("settings/gpu_debug_app") + read("settings/gpu_debug_layers"),
              GAME + "\nVK_LAYER_KORDANIX_overlay\n");
    EXPECT_EQ(read("running/" + GAME), "77\n");
    EXPECT_EQ(android("doctor").status, 0) << android("doctor").out << android("doctor").err;

    const std::string published = property("settingsgeneration");
    EXPECT_EQ(android("set widget_fps_position BOTTOM_RIGHT screen_rate '$(id) '\\''\"; x'").err, "");
    EXPECT_EQ(property("widget_fps_position"), "7");
    EXPECT_EQ(property("screen_rate"), "$(id) '\"; x") << "no shell on the way reads it";
    EXPECT_NE(property("settingsgeneration"), published);

    EXPECT_THAT(android("dump").out, HasSubstr("dumps into game-20260101-120000-1;"));
    EXPECT_EQ(property("devmode"), "true");
    const std::string first = property("command");
    EXPECT_THAT(android("dump").out, HasSubstr("ended its dump: 2 frames in game-20260101-120000-1;"));
    EXPECT_NE(property("command"), first);
    EXPECT_THAT(first, testing::MatchesRegex("[0-9]+ dump"));
    EXPECT_EQ(android("capture").err, "");
    EXPECT_THAT(property("command"), testing::EndsWith(" capture"));
    EXPECT_EQ(android("report").err, "");
    EXPECT_THAT(read(GAME + ".html"), HasSubstr("<html"));
    EXPECT_EQ(android("pull 'my dumps'").err, "");
    EXPECT_THAT(read("my dumps/kordanix/game-20260101-120000-1/frames.csv"), HasSubstr("3,43,59"));
    if (HAS_PICTURES) {
        EXPECT_EQ(android("picture p.png").err, "");
        EXPECT_EQ(read("p.png").substr(1, 3), "PNG");
        EXPECT_TRUE(mHome.shell("! ls " + data + "files/kordanix/*.pam 2>/dev/null"))
            << "it was removed after fetching";
    }

    EXPECT_EQ(android("install --apk layers.apk").err, "");
    EXPECT_EQ(android("start").err, "");
    EXPECT_EQ(read("settings/gpu_debug_layer_app"), "kordanix.layers\n");
    EXPECT_EQ(property("api"), "0");
    EXPECT_EQ(android("off").err, "");
    const auto left = support::run({"/bin/sh", "-c",
                                    "cd $PHONE; find properties -size 0 -delete; diff -r before properties;"
                                    "find data settings packages -type f"});
    EXPECT_EQ(left.out, "settings/other\npackages/" + GAME + '\n');
}

TEST_F(AndroidTest, EveryTroubleIsSaidWithWhatToDo) {
    ASSERT_EQ(android("install --layers layers").status, 0);
    ASSERT_EQ(android("start").status, 0);
    const struct {
        const char* trouble;  ///< of the phone, or what to do to it before
        const char* words;
        const char* expected;
    } cases[] = {
        {"no-device", "start", "adb sees no device: connect one"},
        {"several", "start", "choose one with --serial"},
        {"unauthorized", "pull", "accept the question"},
        {"offline", "off", "unplug it"},
        {"wrong-serial", "doctor --serial abc", "no device with that serial number"},
        {"no-permissions", "dump", "android-sdk-platform-tools-common"},
        {"server", "capture", "'adb kill-server'"},
        {"PATH=", "start", "no program 'adb' in PATH: install"},
        {"echo 28 >properties/ro.build.version.sdk;", "start", "too old (API level 28)"},
        {"echo >properties/ro.build.version.sdk;", "start", "does not say which Android"},
        {"rm packages/*;", "install --layers layers", "is not installed on the device"},
        {"rm packages/*;", "set status true && $CTL android com.example.game picture", "is not installed"},
        {"sed -i s/DEBUGGABLE// packages/*;", "install --layers layers", "install a debug build"},
        {"sed -i s/DEBUGGABLE// packages/*;", "start; false", "com.android.graphics.injectLayers.enable"},
        {"sed -i s/DEBUGGABLE// packages/*;", "pull", "install a debug build"},
        {"sed -i s/DEBUGGABLE// packages/*;", "dump", "install a debug build"},
        {"no-data", "install --layers layers", "start it once"},
        {"full", "install --layers layers", "no room left"},
        {"restricted", "install --apk layers.apk", "refuses to install over USB"},
        {"other-key", "install --apk layers.apk", "com.example.game off' removes it"},
        {"no-abi", "install --apk layers.apk", "no libraries for this device's processor"},
        {"", "install --apk none.apk", "none.apk: cannot be read; scripts/android-apk.sh"},
        {"", "install --layers layers --abi x86_64", "has neither libKordanixGles.so nor"},
        {"breaks", "start", "pm path kordanix.layers' failed"},
        {"breaks", "off", "pm path kordanix.layers' failed"},
        {"no-settings", "start", "refuses to change its settings"},
        {"no-setprop", "set status true", "refuses to set the property"},
        {"",
         "set proc "
         "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
         "keeps 91 bytes"},
        {"no-launcher", "start", "start it by hand"},
        {"rm running/*;", "dump", "is not running"},
        {"echo com.example.game:r >properties/debug.kordanix.proc;", "dump", "is not running"},
        {"deaf", "dump --seconds 0.1", "does not answer"},
        {"deaf", "picture --seconds 0.1", "does not answer"},
        {"disk", "dump", "failed: no room"},
        {"", "pull", "has no dumps and no pictures"},
        {"rm settings/gpu_debug_app;", "doctor", "gpu_debug_app is null: 'kordanixctl android"},
        {"rm running/*;", "doctor", "!!  com.example.game is not running"},
        {"rm data/*/*.so;", "doctor", "!!  the layer is there: no: 'kordanixctl android"},
    };
    ASSERT_TRUE(mHome.shell("mkdir kept; cp -r properties settings packages running data kept"));
    for (const auto& [trouble, words, expected] : cases) {
        const bool isCommand = std::string(trouble).find_first_of(";=") != std::string::npos;
        const support::Outcome outcome =
            android(words, isCommand ? trouble : "TROUBLE='" + std::string(trouble) + "'");
        EXPECT_EQ(outcome.status, 1) << trouble << ' ' << words;
        EXPECT_THAT(outcome.out + outcome.err, HasSubstr(expected)) << trouble << ' ' << words;
        ASSERT_TRUE(mHome.shell("rm -r properties settings packages running data; cp -r kept/* ."));
    }
    for (const char* const words :
         {"", "frobnicate", "set status", "set nonsense 1", "start widget_fps maybe", "pull a b", "dump now",
          "--serial", "off --process 1"}) {
        EXPECT_EQ(android(words).status, 2) << words;
    }
    EXPECT_THAT(run("$CTL android 'x;y' off").err, HasSubstr("is not the name of an Android package"));
}

/// What is printed does the same when a shell runs it.
TEST_F(AndroidTest, ShownCommandsAreThoseThatAreRun) {
    const std::string fresh =
        "rm -rf data/*/files; mkdir -p data/com.example.game/files/kordanix; : "
        ">properties/debug.kordanix.devmode";
    for (const char* const words : {"install --layers layers --abi arm64-v8a", "start api 1", "dump",
                                    "capture", "set screen_rate 'a b'", "pull"}) {
        const auto calls = [&](const std::string& line) {
            EXPECT_EQ(run("rm -f calls; " + line).status, 0) << line;
            // The numbers are those of the moment.
            return support::run({"/bin/sh", "-c",
                                 "cd $PHONE; sed -E 's/[0-9]{13}/N/; /getprop/d; /pidof/d; /cat /d' calls"})
                .out;
        };
        const std::string line = "$CTL android " + GAME + ' ' + words;
        ASSERT_TRUE(mHome.shell(fresh));
        const std::string shown = calls(line + " --print >shown; test ! -e calls && sh shown");
        EXPECT_THAT(shown, Not(testing::IsEmpty()));
        ASSERT_TRUE(mHome.shell(fresh));
        EXPECT_EQ(shown, calls(line)) << words;
    }
    EXPECT_THAT(run("PATH=/nowhere; $CTL android a.b install --print --layers x --serial 'a b'").out,
                HasSubstr("adb -s 'a b' push x/ABI/libKordanixGles.so /data/local/tmp/libKordanixGles.so\n"));
}

TEST(ShellWord, EveryByteReachesTheOtherSide) {
    std::vector<std::string> words = {"",  "plain-1.2:3", "a b", "it's", "it's $5", "$x `y` \\ \"",
                                      "~", "#",           "-n",  "*"};
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    words.push_back(all);
    for (const std::string& word : words) {
        EXPECT_EQ(support::run({"/bin/sh", "-c", "printf %s " + shellWord(word)}).out, word);
    }
}

}  // namespace
}  // namespace control
