#include "RunFixture.h"
#include "keys/KeyChords.h"
#include "opengl/context/VirtualDisplay.h"
#include "settings/KeyNames.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <tuple>

namespace control {
namespace {

using testing::HasSubstr;

// Keys by letters: '<' and '>' are the left and the right Shift, '^' is Control, '1' means 1 and !.
TEST(KeyChords, AreAKeyWithItsModifiersAndNothingElse) {
    const std::pair<char, const char*> keyboard[] = {{'<', "Shift_L"}, {'>', "Shift_R"}, {'^', "Control_L"},
                                                     {'2', "F2"},      {'T', "F10"},     {'W', "F12"}};
    KeyChords chords;
    KeyChords::ModifierOf modifiers = {};
    for (const auto& [key, name] : keyboard) {
        modifiers[static_cast<std::size_t>(key)] = modifierBits(name);
    }
    chords.setModifiers(modifiers);
    const auto press = [&](const std::vector<std::string>& bindings, const std::string& keys) {
        std::vector<KeyChords::Binding> all;
        KeyChords::KeysOf keysOf;
        for (const std::string& text : bindings) {
            all.push_back({static_cast<KeyAction>(all.size()), readChord(text).chord});
            keysOf.emplace_back();
            for (const auto& [key, name] : keyboard) {
                keysOf.back()[static_cast<std::size_t>(key)] = keyNumber(name) == all.back().chord.key;
            }
        }
        chords.setBindings(all, keysOf);
        std::string actions;
        for (const char key : keys) {
            if (const auto action = chords.onPress(static_cast<std::size_t>(key))) {
                actions += "tplc"[static_cast<int>(*action)];
            }
        }
        for (const char key : keys) {
            chords.onRelease(static_cast<std::size_t>(key));
        }
        return actions;
    };
    const std::vector<std::string> usual = {"Shift_R+F12", "Shift_R+F10", "Shift_L+F2"};
    const std::tuple<std::vector<std::string>, const char*, const char*> cases[] = {
        {usual, ">W", "t"},
        {usual, ">T", "p"},
        {usual, "<2", "l"},
        {usual, "W>", ""},
        {usual, "W", ""},
        {usual, "<W", ""},
        {usual, "<>W", ""},
        {usual, ">^W", ""},
        {usual, ">a", ""},
        {usual, ">WW", "t"},
        {usual, ">aWT", "tp"},
        {{"Shift+F12"}, "<W", "t"},
        {{"F12"}, "W", "t"},
        {{"F12"}, ">W", ""},
        {{"Shift+F12"}, "<>W", "t"},
        {{"Ctrl+Shift_R+F2"}, "^>2", "t"},
        {{"none"}, ">W", ""},
        {{"Ctrl+Shift_R+F2"}, ">2", ""}};
    for (const auto& [bindings, keys, actions] : cases) {
        EXPECT_EQ(press(bindings, keys), actions) << bindings.front() << ' ' << keys;
    }
}

class RunKeys : public RunFixture {
protected:
    RunKeys() {
        setenv("DISPLAY", VirtualDisplay::get().name().c_str(), 1);
        setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
        setenv("XDG_DATA_HOME", mHome.path("data").c_str(), 1);
        setenv("TYPED", SDL_PROGRAMS "checkkeys", 1);
        // A press of 30 ms of keys by their numbers: 50 and 62 are left and right Shift, 68, 75, 76 and
        // 96 F2, F9, F10 and F12.
        std::ofstream(mHome.path("press"))
            << "xdotool windowfocus --sync $1 keydown $2 keydown $3 sleep 0.03 keyup $3 keyup $2\n";
        std::ofstream(mHome.path("window"))
            << "until xdotool search --onlyvisible --name \"$1\" 2>/dev/null; do sleep 0.1; done | tail -1\n";
        std::ofstream(mHome.path("until"))
            << "for i in $(seq 100); do [ \"$($CTL get $1)\" = $2 ] && exit 0; sleep 0.05; done\n"
               "echo \"$1 is not $2\"\n";
        std::ofstream(mHome.path("said"))
            << "for i in $(seq 100); do $CTL get debug.kordanix.notice | grep -q \"$1\" && exit 0; sleep "
               "0.05; done; echo \"$1 was not said\"\n";
    }
    ~RunKeys() override { setenv("DISPLAY", VirtualDisplay::get().name().c_str(), 1); }
};

TEST_F(RunKeys, ActInTheFocusedWindowAloneAndReachTheProgramToo) {
    const support::Outcome outcome =
        run("glxgears >/dev/null 2>&1 & bare=$! other=$(sh window glxgears)\n"
            "$CTL run $TYPED >typed 2>&1 & ours=$(sh window CheckKeys)\n"
            // The program may have started before its keys are listened to, and the focus is asked for a
            // moment after a press.
            "for i in $(seq 30); do sh press $ours 62 75; sleep 0.3; ls data/kordanix/logs/*.png "
            ">/dev/null 2>&1 && break; done; ls data/kordanix/logs | grep -c '^checkkeys-.*png$'\n"
            "sh press $ours 50 96; sh press $other 62 96; sleep 1; sh press $ours 62 96\n"
            "sh until status false\n"
            "sh press $ours 62 96; sh until status true\n"
            "sh press $ours 62 76; sh until kordanix.run.preset full\n"
            "sh press $ours 50 68; sh said 'Log started'; sh press $ours 50 68; sh said 'Log saved'\n"
            "$CTL set keys off; sh press $ours 62 96; sleep 1; $CTL toggle; sh until status false\n"
            "$CTL set keys on key_toggle 'left Shift+F10'; sh press $ours 62 96; sleep 1; sh press $ours 50 "
            "76; sh until status true\n"
            "kill $! $bare; wait $!; grep -c F12 typed; grep -c '^kordanixctl: Saved /' typed\n");
    EXPECT_THAT(outcome.out,
                testing::MatchesRegex("[1-9][0-9]*\nOverlay hidden\n[1-9][0-9]*\n[1-9][0-9]*\n"));
    EXPECT_EQ(outcome.err, "");
}

// Without the library that asks the server whose a window is, by what the window says of itself.
TEST_F(RunKeys, AWindowIsAlsoKnownByItself) {
    const support::Outcome outcome =
        run("mkdir none; : >none/libXRes.so.1; LD_LIBRARY_PATH=$PWD/none $CTL run $TYPED >/dev/null 2>&1 &\n"
            "ours=$(sh window CheckKeys); for i in $(seq 30); do sh press $ours 62 96; sleep 0.3; "
            "[ $($CTL get status) = false ] && break; done; $CTL get status; kill $!");
    EXPECT_EQ(outcome.out, "false\n") << outcome.err;
}

TEST_F(RunKeys, AreNotListenedToWhenTheyAreOff) {
    const struct {
        const char* options;
        const char* profile;
        const char* later;  ///< what is done then
        const char* children;
    } cases[] = {
        {"", "", ":", "kordanix-keys sleep "},
        {"--no-keys", "", ":", "sleep "},
        {"--set keys=off", "", ":", "sleep "},
        {"", "keys = off", ":", "sleep "},
        {"", "keys = off", "sleep .3; : >config/kordanix/default.conf", "kordanix-keys sleep "},
        {"--no-keys", "", "until $CTL get status | grep -q true; do sleep .1; done; $CTL set keys on",
         "kordanix-keys sleep "},
        {"--set keys=on", "keys = off", ":", "kordanix-keys sleep "}};
    std::filesystem::create_directories(mHome.path("config/kordanix"));
    for (const auto& [options, profile, later, children] : cases) {
        std::ofstream(mHome.path("config/kordanix/default.conf")) << profile << '\n';
        const support::Outcome outcome =
            run(std::string("$CTL run ") + options + " sleep 60 & " + later +
                "; for i in $(seq 100); do sleep 0.05; found=$(ps -o comm= --ppid $! | sort | tr "
                "'\\n' ' '); [ \"$found\" = '" +
                children + "' ] && break; done; echo \"$found\"; kill $!; wait $!");
        EXPECT_EQ(outcome.out, std::string(children) + '\n') << options << profile;
    }
}

// A server that takes connections and says nothing, and one that dies.
TEST_F(RunKeys, AServerNeitherHoldsUpNorEndsTheRun) {
    const int silent = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {AF_UNIX, {}};
    const std::string number = std::to_string(getpid());
    const std::string name = "/tmp/.X11-unix/X" + number;
    name.copy(address.sun_path + 1, sizeof(address.sun_path) - 1);  // a name of Linux's own, without a file
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    ASSERT_EQ(bind(silent, reinterpret_cast<const sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(silent, 8), 0);
    const support::Outcome hanging = run("DISPLAY=:" + number + " $CTL run sh -c 'exit 3'");
    EXPECT_EQ(hanging.status, 3);
    EXPECT_THAT(run("DISPLAY=:" + number + " $CTL doctor").out, HasSubstr("the X server does not answer"));
    EXPECT_THAT(run("$CTL doctor").out, HasSubstr("hears keys in the windows"));
    close(silent);

    const support::Outcome dying = run(
        "Xvfb -displayfd 5 -nolisten tcp 5>number 2>/dev/null & until grep -qs . number; do sleep 0.1; done\n"
        "export DISPLAY=:$(cat number) X=$!; $CTL run sh -c 'sleep 0.5; kill $X; sleep 0.5; exit 4'");
    EXPECT_EQ(dying.status, 4);
    EXPECT_THAT(dying.err, HasSubstr("the overlay was not shown"));
    EXPECT_EQ(std::count(dying.err.begin(), dying.err.end(), '\n'), 1) << dying.err;
}

}  // namespace
}  // namespace control
