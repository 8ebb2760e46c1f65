#include "faults/Publisher.h"

#include "properties/SystemProperties.h"

#include <random>

namespace faults {

std::string showOverlay(int opacity, const std::string& text) {
    return platform::setProperties({{"debug.kordanix.status", "true"},
                                    {"debug.kordanix.api", "0"},
                                    {"debug.kordanix.proc", HOST_NAME},
                                    {"debug.kordanix.devmode", "true"},
                                    {"debug.kordanix.fixclock", "true"},
                                    {"debug.kordanix.widget_memory", "true"},
                                    {"debug.kordanix.bg_color", text},
                                    {"debug.kordanix.bg_transparency", std::to_string(opacity)},
                                    {"debug.fault.text", text},
                                    {"debug.kordanix.settingsgeneration", "x"}});
}

Publisher::Publisher(unsigned seed)
    : mProcess([seed] {
          std::mt19937 random(seed);
          for (;;) {
              const std::string text(random() % 92, static_cast<char>('a' + random() % 26));
              if (!showOverlay(static_cast<int>(random() % 256), text).empty()) {
                  return 1;
              }
          }
      }) {}

}  // namespace faults
