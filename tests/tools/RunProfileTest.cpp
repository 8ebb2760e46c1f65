#include "RunFixture.h"

namespace control {
namespace {

using testing::HasSubstr;

using RunProfile = RunFixture;

// `cases` go on where the last one ended.
TEST_F(RunProfile, ProfilesAreUsedSavedListedAndChecked) {
    std::ofstream(mHome.path("game")) << "#!/bin/sh\neval \"$1\"\n";
    const std::string get =
        "; $CTL run --set scale=1.1 ./game '$CTL get' | sed -n 's/.*nix\\.//p' | tr '\\n' ' '";
    const struct {
        std::string line;
        int status;
        std::string output;
    } cases[] = {
        {"chmod 700 game; $CTL profile list", 0, "There are no profiles in " + mHome.path("config/kordanix")},
        {"mkdir -p config/kordanix; cd config/kordanix; echo 'scale 1.5\nbg_color #000001\nwidget_memory on' "
         ">default.conf; echo 'bg_color 2\nwidget_fsp 1\n' >game.conf; cd ../.." +
             get,
         0, "status true bg_color 2 scale 1.1 widget_memory true settingsgeneration 1 "},
        {"$CTL run ./game 2>&1", 0,
         "kordanix/game.conf:2: there is no property 'widget_fsp'; did you mean 'widget_fps'?"},
        {"$CTL profile list", 0, "default  3 settings\ngame     1 setting, 1 wrong line\n\nThe profiles"},
        {"$CTL profile check", 1, "game.conf:2: there is"},
        {"$CTL profile check default", 0, "default: 3 settings\n"},
        {"seq 1 12 >config/kordanix/true.conf; $CTL profile check true 2>&1 | grep -c 'no property'", 0,
         "12\n"},
        {"seq 1 12 >config/kordanix/true.conf; $CTL run true 2>&1; rm config/kordanix/true.conf", 0,
         "true.conf:10: there is no property '10'; see 'kordanixctl list'\nkordanixctl: and 2 more wrong "
         "lines;"},
        {"$CTL profile check none", 1, "there is no profile"},
        {"EDITOR='sed -i s/fsp.1/fps_median=off/' $CTL profile edit game", 0, "game: 2 settings\n"},
        {"EDITOR=true $CTL profile edit new; EDITOR=false VISUAL= $CTL profile edit new; ls config/kordanix",
         0, "default.conf\ngame.conf\n"},
        {"$CTL run ./game '$CTL set scale 1 bg_color 3 && $CTL save game'; cat config/kordanix/game.conf", 0,
         "/game.conf\nbg_color #000003\nwidget_fps_median=off\n\nscale 1\n"},
        // What its options say of the run is not what it shows; keys that were set are.
        {"$CTL run --no-keys ./game '$CTL save game'; $CTL run --set keys=off ./game '$CTL set key_log F1 "
         "keys "
         "on && $CTL save game'; cat config/kordanix/game.conf; sed -i /key/d config/kordanix/game.conf",
         0, "\n\nscale 1\nkey_log F1\n"},
        {"echo 'key_log Shift_R+F9' >>config/kordanix/default.conf; $CTL profile check default; s=$?; sed -i "
         "/key/d config/kordanix/default.conf; exit $s",
         1, "default.conf:4: 'Shift_R+F9' cannot be 'key_log': it is 'key_picture' already"},
        {"chmod 600 config/kordanix/game.conf; $CTL run ./game '$CTL save game'; stat -c %a "
         "config/kordanix/game.conf",
         0, "\n600\n"},
        {"$CTL run --set key_log=Shift_R+F9 true", 2, "nothing was set: 'Shift_R+F9' cannot be 'key_log'"},
        {"ln -s kordanix/game.conf config/l; $CTL run ./game '$CTL set widget_memory off && $CTL save "
         "$PWD/config/l'; cat "
         "config/kordanix/game.conf; test -L config/l",
         0, "\nscale 1\nwidget_memory false\n"},
        {"$CTL run --preset small ./game '$CTL get widget_frame_time; $CTL preset; $CTL get "
         "widget_frame_time; $CTL "
         "set widget_frame_time off; $CTL preset full; $CTL get widget_fps_low1; $CTL reset; $CTL preset'",
         0, "false\ndefault\ntrue\nfull\ntrue\ndefault\n"},
        {"$CTL run --preset big ls", 2, "there is no preset 'big'; expected small, default or full"},
        {"$CTL preset big", 2, "there is no preset 'big'"},
        {"$CTL preset small", 1, "no overlay is running"},
        {"$CTL profile list game", 2, "'profile list' lists all; it takes no name"},
        {"echo preset small >config/kordanix/p.conf; $CTL profile check p; s=$?; rm config/kordanix/p.conf; "
         "exit $s",
         1, "p.conf:1: a profile has no presets: 'run --preset' begins with one"},
        {"$CTL save config", 0, "/config.conf"},
        {"echo 'scale 1.2' >config/kordanix/kept.conf; $CTL save kept; s=$?; cat config/kordanix/kept.conf; "
         "exit $s",
         1, "scale 1.2\nkordanixctl: no program shows an overlay"},
        {"mkdir config/kordanix/d.conf; $CTL save d", 1, "d.conf: Is a directory"},
        {"$CTL save", 2, "'save NAME' gives it one"},
        {"$CTL profile", 2, "ACTION is required"},
        {"$CTL profile drop", 2, "'drop' is no action; expected list, edit or check"},
        {"unset HOME XDG_CONFIG_HOME; $CTL profile list", 1, "neither XDG_CONFIG_HOME nor HOME"},
    };
    for (const auto& [line, status, output] : cases) {
        const support::Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, status) << line << outcome.out << outcome.err;
        EXPECT_THAT(outcome.out + outcome.err, HasSubstr(output)) << line;
    }
}

TEST_F(RunProfile, AChangedProfileTakesEffectWhereNothingElseWasSet) {
    const support::ChildProcess program({KORDANIXCTL, "run", "--set", "widget_fps=off", "sleep", "1000"});
    ASSERT_TRUE(
        support::waitUntil([&] { return countRuns() == 1 && run("$CTL get status").out == "true\n"; }));
    const auto becomes = [&](const std::string& profile, const std::string& expected) {
        run(profile);
        std::string got;
        EXPECT_TRUE(support::waitUntil([&] {
            got = run("for p in scale widget_memory widget_fps; do $CTL get $p; done | tr '\\n' ' '").out;
            return got == expected;
        })) << profile
            << ": " << got;
    };
    becomes("true", "1 false false ");
    // The folder's own beginnings, a new file, one moved over it, a link, and none any more.
    becomes("mkdir -p config/kordanix; echo 'scale 1.2\nwidget_fps on' >config/kordanix/sleep.conf",
            "1.2 false false ");
    becomes("$CTL set scale 1.4; echo 'scale 1.3\nwidget_memory on' >a; mv a config/kordanix/sleep.conf",
            "1.4 true false ");
    becomes("$CTL reset", "1.3 true false ");
    becomes("echo 'scale 0.9' >b; ln -sf $PWD/b config/kordanix/sleep.conf", "0.9 false false ");
    becomes("echo 'scale 0.8' >b", "0.8 false false ");
    becomes("rm -r config", "1 false false ");
    becomes("mkdir -p config/kordanix; echo 'scale 0.7\nwidget_memroy on' >config/kordanix/default.conf",
            "0.7 false false ");
    EXPECT_THAT(program.errors(), HasSubstr("default.conf:2: there is no property 'widget_memroy'"));
}

}  // namespace
}  // namespace control
