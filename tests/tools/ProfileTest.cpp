#include "RunFixture.h"
#include "profiles/ProfileText.h"
#include "settings/KeyNames.h"
#include "settings/Presets.h"
#include "settings/Profile.h"
#include "settings/ProgramNames.h"

#include <tuple>

namespace control {
namespace {

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
        {"key_toggle F112\nkey_log Shft_L+F1\nkey_log right Shift + m\nkey_preset=Shift_R\nkey_log "
         "Alt+Alt_L+a",
         "key_log=Shift_R+m;!1 'F112' is no value for 'key_toggle': there is no key 'F112'; did you mean "
         "'F11'?;!2 'Shft_L+F1' is no value for 'key_log': there is no modifier 'Shft_L'; did you mean "
         "'Shift_L'?;!4 'Shift_R' is no value for 'key_preset': 'Shift_R' is a modifier, and no key by "
         "itself;!5 'Alt+Alt_L+a' is no value for 'key_log': 'Alt_L' is a modifier that is there already;"},
        {"key_toggle Shift+F10\nkey_preset Ctrl+F12\nkey_log Next\nkey_picture Page_Down",
         "key_toggle=Shift+F10;key_preset=Control+F12;key_log=Next;!4 'Page_Down' cannot be 'key_picture': "
         "it "
         "is 'key_log' already;"},
        {"key_toggle Shift_R+F10\nkey_preset none\nkey_log Shift+F10",
         "key_toggle=Shift_R+F10;key_preset=none;!3 'Shift+F10' cannot be 'key_log': it is 'key_toggle' "
         "already;"},
        {"= x\n\x1B[1m",
         "!1 there is no property ''; see 'kordanixctl list';!2 there is no property '\\x1b[1m'; see "
         "'kordanixctl list';"},
        {std::string("scale 1\0", 8),
         "!1 '1\\x00' is no value for 'scale'; expected a number from 0.5 to 1.8, with "
         "at most two decimals;"},
    };
    const bool isAnyKeyTaken = keyNumber("no key") != 0;  // without X's headers
    for (const auto& [text, expected] : cases) {
        if (text.find("key_") != 0 || !isAnyKeyTaken) {
            EXPECT_EQ(describe(parseProfile(text)), expected) << text;
        }
    }
}

TEST_F(RunFixture, AProgramsProfileHasItsExecutablesItsScriptsOrItsExesName) {
    std::ofstream(mHome.path("launch")) << "#!/usr/bin/env python3\n";
    std::ofstream(mHome.path("game.py")) << "import game\n";
    using Names = std::vector<std::string>;
    const std::tuple<std::string, Names, Names> cases[] = {
        {"/usr/bin/glxgears.x86_64", {"glxgears", "-info"}, {"glxgears", "glxgears.x86_64"}},
        {"/usr/bin/vkcube", {"/usr/bin/vkcube"}, {"vkcube"}},
        {"/opt/a b/browser", {"/opt/a b/browser --type=gpu --log=/tmp/x"}, {"browser"}},
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
        {"small", "widget_memory", ""},
        {"small", "widget_fps_median", "false"},
        {"small", "widget_fps_current", ""},
        {"small", "widget_fps_position", "7"},
        {"small", "widget_cpu_gpu_position", "7"},
        {"small", PRESET_PROPERTY, "small"},
        {"default", "widget_memory", "true"},
        {"default", "widget_fps_position", "7"},
        {"default", "widget_fps_median", ""},
        {"default", PRESET_PROPERTY, ""},
        {"full", "widget_fps_low01", "true"},
        {"full", "widget_fps_position", "7"},
        {"full", "bg_color", "(left alone)"},
    };
    for (const auto& [preset, name, text] : cases) {
        EXPECT_EQ(textOf(preset, name), text) << preset << ' ' << name;
    }
    EXPECT_EQ(presetAfter("small") + presetAfter("") + presetAfter("full") + presetAfter("x"),
              "defaultfullsmallsmall");
}

}  // namespace
}  // namespace control
