#include "faults/Publisher.h"

#include "properties/SystemProperties.h"
#include "settings/PropertyTable.h"

#include <random>
#include <thread>

namespace faults {

namespace {

/// Texts that some property can be given and another cannot read.
const char* const TEXTS[] = {"true", "false", "0",    "5",          "255",          "-16743169",
                             "",     "TRUE",  "1e9",  "4294967296", "\xFF\xFE\x01", "0x7",
                             "nan",  "  3",   "%s%n", "../../etc",  "-2147483648"};

/// Only now and then one that hides the overlay or disables its keys.
std::string setAny(std::mt19937& random) {
    const control::PropertyRows all = control::properties();
    const control::Property& property = all.first[random() % all.count];
    const bool isNeeded = control::isControlProperty(property) || property.shortName == "devmode";
    return isNeeded && random() % 5 != 0 ? showOverlay()
                                         : platform::setProperty(control::fullName(property).c_str(),
                                                                 TEXTS[random() % std::size(TEXTS)]);
}

}  // namespace

std::string showOverlay(int opacity) {
    return platform::setProperties({{"debug.kordanix.status", "true"},
                                    {"debug.kordanix.api", "0"},
                                    {"debug.kordanix.proc", HOST_NAME},
                                    {"debug.kordanix.devmode", "true"},
                                    {"debug.kordanix.fixclock", "true"},
                                    {"debug.kordanix.widget_memory", "true"},
                                    {"debug.kordanix.bg_transparency", std::to_string(opacity)},
                                    {"debug.kordanix.settingsgeneration", "x"}});
}

Publisher::Publisher(unsigned seed, bool isWild, std::chrono::microseconds longestPause)
    : mProcess([=] {
          std::mt19937 random(seed);
          std::string error;
          while (error.empty()) {
              const std::string text(random() % 92, static_cast<char>('a' + random() % 26));
              for (auto count = random() % 4; count > 0; --count) {
                  error += isWild ? setAny(random) : showOverlay(static_cast<int>(random() % 256));
              }
              error += platform::setProperties(
                  {{"debug.fault.text", text}, {"debug.kordanix.settingsgeneration", "x"}});
              std::this_thread::sleep_for(longestPause * (random() % 1000) / 1000);
          }
          return 1;
      }) {}

}  // namespace faults
