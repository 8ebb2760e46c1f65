#include "settings/Profile.h"

#include <tuple>

#include "RunFixture.h"
#include "profiles/ProfileText.h"
#include "settings/Presets.h"
#include "settings/ProfileFiles.h"
#include "settings/ProgramNames.h"

namespace control {
namespace {

using testing::HasSubstr;

std::string describe(const Profile& profile) {
    std::string text;
    for (const Assignment& assignment : profile.assignments) {
        text += assignment.name.substr(assignment.name.rfind('.') + 1) + '=' + assignment.text + ';';
    }
    for (const ProfileError& error : profile.errors) {
        text += '!' + std::to_string(error.line) + ' ' + error.text + ';';
    }
    return text;
}

TEST(Profile, TakesLinesAsSetDoesAndNamesTheWrongOnes) {
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},
        {"\xEF\xBB\xBFscale 1.2\r\nwidget_memory ON", "scale=1.2;widget_memory=true;"},
        {"  debug.kordanix.scale\t=  0.8  # small\n", "scale=0.8;"},
        {"bg_color #102030 # dark\nbg_color=#FFFFFF\n#bg_color 1\n # x",
         "bg_color=4279246896;bg_color=4294967295;"},
        {"widget_fps_position TOP_RIGHT\n", "widget_fps_position=2;"},
        {"screen_rate a b#c", "screen_rate=a b#c;"},
        {"scale\n\nscale 1 2\nscale 1.1",
         "scale=1.1;!1 'scale' has no value; expected NAME VALUE;!3 '1 2' is no "
         "value for 'scale'; expected a number from 0.5 to 1.8, with at most two "
         "decimals;"},
        {"widget_fsp on\nscale 1.5",
         "scale=1.5;!1 there is no property 'widget_fsp'; did you mean 'widget_fps'?;"},
        {"proc x\napi 0\nsettingsgeneration 1",
         "!1 'proc' cannot be set in a profile;!2 'api' cannot be set in a "
         "profile;!3 'settingsgeneration' cannot be set in a profile;"},
        {"= x\n\x1B[1m",
         "!1 there is no property ''; see 'kordanixctl list';!2 there is no property '\\x1b[1m'; see "
         "'kordanixctl list';"},
        {std::string("scale 1\0", 8),
         "!1 '1\\x00' is no value for 'scale'; expected a number from 0.5 to 1.8, with "
         "at most two decimals;"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(describe(parseProfile(text)), expected) << text;
    }
}

TEST_F(RunFixture, AProgramsProfileHasItsExecutablesItsScriptsOrItsExesName) {
    std::ofstream(mHome.path("launch")) << "#!/usr/bin/env python3\n";
    std::ofstream(mHome.path("game.py")) << "import game\n";
    using Names = std::vector<std::string>;
    const std::tuple<std::string, Names, Names> cases[] = {
        {"/usr/bin/glxgears.x86_64", {"glxgears", "-info"}, {"glxgears", "glxgears.x86_64"}},
        {"/usr/bin/vkcube", {"/usr/bin/vkcube"}, {"vkcube"}},
        {"/usr/bin/python3.11", {"python3", "./launch", "x"}, {"launch"}},
        {"/usr/bin/python3.11", {"python3", "-u", mHome.path("game.py")}, {"game.py"}},
        {"/usr/bin/cat", {"cat", "launch"}, {"cat"}},
        {"/usr/bin/dash", {"sh", "-c", "glxgears"}, {"sh", "dash"}},
        {"/opt/wine/bin/wine64-preloader", {"C:\\Games\\Portal.EXE", "-w"}, {"Portal.EXE"}},
        {"/usr/lib/wine/wine", {"wine", "start", "z:/x/a.exe"}, {"a.exe"}},
        {"/usr/lib/wine/wineserver", {"wineserver"}, {"wineserver"}},
        {"", {}, {}},
    };
    for (const auto& [executable, words, names] : cases) {
        EXPECT_EQ(programNames({executable, words, mHome.path()}), names) << executable;
    }
    EXPECT_THAT(processNames("/proc/self"), testing::Contains("control_tests"));
    EXPECT_EQ(processNames("/proc/0"), Names());
}

TEST(ProfileText, IsUpdatedWithoutLossOfWhatTheUserWrote) {
    using Values = std::map<std::string_view, std::string>;
    const std::tuple<const char*, Values, const char*> cases[] = {
        {"", {}, ""},
        {"", {{"scale", "1.2"}, {"bg_color", "#010203"}}, "bg_color #010203\nscale 1.2\n"},
        {"# mine\nscale 1.2 # big\nbg_color 1\n\nwidget_fps off",
         {{"scale", "1.2"}, {"bg_color", "#000002"}},
         "# mine\nscale 1.2 # big\nbg_color #000002\n\n"},
        {"status off\nscal 2\nscale 1\nscale 1.1\n", {{"scale", "1.1"}}, "status off\nscal 2\nscale 1.1\n"},
    };
    for (const auto& [old, values, expected] : cases) {
        EXPECT_EQ(updateProfile(old, values), expected) << old;
    }
    const Profile offered = parseProfile(profileTemplate("default"));
    EXPECT_TRUE(offered.assignments.empty() && offered.errors.empty());
}

TEST(Presets, GovernTheSwitchesAndReturnToWhatWasThere) {
    const std::map<std::string, std::string> base = {{"debug.kordanix.widget_memory", "true"},
                                                     {"debug.kordanix.widget_fps_position", "7"},
                                                     {"debug.kordanix.bg_color", "1"}};
    const auto textOf = [&](const char* preset, const std::string& name) {
        for (const Assignment& assignment : presetAssignments(preset, base)) {
            if (assignment.name == name || assignment.name == "debug.kordanix." + name) {
                return assignment.text;
            }
        }
        return std::string("(left alone)");
    };
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"small", "widget_memory", ""},          {"small", "widget_fps_median", "false"},
        {"small", "widget_fps_current", ""},     {"small", "widget_fps_position", ""},
        {"small", PRESET_PROPERTY, "small"},     {"default", "widget_memory", "true"},
        {"default", "widget_fps_position", "7"}, {"default", "widget_fps_median", ""},
        {"default", PRESET_PROPERTY, ""},        {"full", "widget_fps_low01", "true"},
        {"full", "widget_fps_position", "7"},    {"full", "bg_color", "(left alone)"},
    };
    for (const auto& [preset, name, text] : cases) {
        EXPECT_EQ(textOf(preset, name), text) << preset << ' ' << name;
    }
    EXPECT_EQ(presetAfter("small") + presetAfter("") + presetAfter("full") + presetAfter("x"),
              "defaultfullsmallsmall");
}

// `cases` go on where the last one ended.
TEST_F(RunFixture, ProfilesAreUsedSavedListedAndChecked) {
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
        {"$CTL save config", 0, "/config.conf"},
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

TEST_F(RunFixture, AChangedProfileTakesEffectWhereNothingElseWasSet) {
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
