#include "watch/TerminalView.h"

#include "Diagnostic.h"
#include "overlays/OverlayState.h"
#include "processes/EndSignals.h"
#include "properties/SetCommand.h"
#include "watch/FigureFeed.h"
#include "watch/Terminal.h"
#include "watch/WatchScreen.h"
#include "watch/WatchTarget.h"

#include <algorithm>
#include <chrono>
#include <sstream>

namespace control {

namespace {

constexpr int KEY_PATIENCE_MS = 50;
constexpr std::chrono::seconds SHOWN_FOR{5};

/// What the keys do, and what they say.
class Keys {
public:
    explicit Keys(WatchScreen& screen) : mScreen(screen) {}

    /// False when the user has had enough.
    bool handle(const Terminal::Press& press) {
        switch (press.key) {
            case Terminal::Key::UP:
                mScreen.select(-1);
                break;
            case Terminal::Key::DOWN:
                mScreen.select(1);
                break;
            case Terminal::Key::CHARACTER:
                return handle(press.character);
            default:
                break;
        }
        return true;
    }

    /// What the last key has done, for a while.
    std::string message() const {
        return std::chrono::steady_clock::now() < mShownUntil ? mMessage : std::string();
    }

private:
    bool handle(char key) {
        if (key == 'q' || key == 'Q') {
            return false;
        }
        if (key == ' ' && mScreen.selected() != nullptr) {
            turn(mScreen.selected()->settings.property);
        }
        const auto* const end = WatchScreen::SWITCHES + WatchScreen::SWITCH_COUNT;
        const auto* const found =
            std::find_if(WatchScreen::SWITCHES, end, [&](const auto& each) { return each.key == key; });
        if (found != end) {
            turn(found->property);
        }
        return true;
    }

    void turn(const std::string& property) {
        const std::string value = displayedValue(property) == "true" ? "false" : "true";
        std::ostringstream error;
        const bool isSet = setProperties({property, value}, {}, error) == SUCCESS;
        mMessage = isSet ? property + (value == "true" ? " is on" : " is off") : error.str();
        mMessage.erase(std::min(mMessage.find('\n'), mMessage.size()));
        mShownUntil = std::chrono::steady_clock::now() + SHOWN_FOR;
    }

    WatchScreen& mScreen;
    std::string mMessage;
    std::chrono::steady_clock::time_point mShownUntil;
};

/// Returns why the view ended, or an empty text when somebody ended it.
std::string run(Terminal& terminal, FigureFeed& feed, const WatchTarget& target, const EndSignals& signals) {
    WatchScreen screen(target);
    Keys keys(screen);
    bool isChanged = true;
    std::string shown;
    while (signals.wait(std::chrono::nanoseconds(0))) {
        if (const auto report = feed.ask()) {
            screen.add(*report);
            isChanged = true;
        }
        if (feed.hasEnded() || !feed.error().empty()) {
            return feed.hasEnded() ? describeProcess(target.process, baseName(target.name)) + " has ended"
                                   : feed.error();
        }
        const Terminal::Press press = terminal.press(KEY_PATIENCE_MS);
        if (!keys.handle(press)) {
            break;
        }
        const std::string message = keys.message().empty() ? describeStandstill(feed) : keys.message();
        if (isChanged || press.key != Terminal::Key::NONE || message != shown) {
            screen.setMessage(message);
            screen.draw(terminal);
            shown = message;
            isChanged = false;
        }
    }
    return {};
}

}  // namespace

ExitCode showTerminalView(std::optional<pid_t> process, std::ostream& err) {
    WatchTarget target;
    std::string error = chooseWatchTarget(process, target);
    if (!error.empty()) {
        return fail(error, err);
    }
    const EndSignals signals;
    FigureFeed feed(target.directory, target.process);
    error = feed.open();
    if (!error.empty()) {
        return fail(error, err);
    }
    std::string end;
    {
        Terminal terminal;
        error = terminal.open();
        if (!error.empty()) {
            return fail(error, err);
        }
        end = run(terminal, feed, target, signals);
    }
    if (feed.hasEnded()) {
        printDiagnostic(end, err);
        return SUCCESS;
    }
    return failUnlessEmpty(end, err);
}

}  // namespace control
