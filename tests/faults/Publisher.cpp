#include "faults/Publisher.h"

#include "properties/SystemProperties.h"
#include "settings/PropertyTable.h"

#include <thread>
#include <utility>
#include <vector>

namespace faults {

namespace {

/// Texts that some property can be given and another cannot read.
const char* const STRANGE[] = {
    "",    "TRUE", "1e9", "-1",   "4294967296", "99999999999999999999", "\xFF\xFE\x01", "0x7",
    "nan", "  3",  "8",   "%s%n", "../../etc",  "-2147483648"};

std::string textFor(const control::Property& property, std::mt19937& random) {
    switch (property.type) {
        case control::PropertyType::BOOLEAN:
            return random() % 2 == 0 ? "true" : "false";
        case control::PropertyType::POSITION:
            return std::to_string(random() % 8);
        case control::PropertyType::OPACITY:
            return std::to_string(random() % 256);
        case control::PropertyType::COLOR:
            return std::to_string(static_cast<int>(random()));
        case control::PropertyType::API:
            return "0";
        default:
            return HOST_NAME;
    }
}

}  // namespace

std::string set(const std::string& name, const std::string& value) {
    return platform::setProperty(control::expandName(name).c_str(), value.c_str());
}

std::string publish() {
    return set("settingsgeneration", "x");
}

std::string showOverlay() {
    std::string error;
    for (const auto& [name, value] : {std::pair{"status", "true"},
                                      {"api", "0"},
                                      {"proc", HOST_NAME},
                                      {"devmode", "true"},
                                      {"fixclock", "true"},
                                      {"widget_memory", "true"}}) {
        error += set(name, value);
    }
    return error + publish();
}

std::string setAny(std::mt19937& random) {
    const control::PropertyRows all = control::properties();
    const control::Property& property = all.first[random() % all.count];
    const bool isStrange = random() % 10 == 0;
    if (property.shortName == "status" && random() % 5 != 0) {
        return set("status", "true");
    }
    return set(control::fullName(property),
               isStrange ? STRANGE[random() % std::size(STRANGE)] : textFor(property, random));
}

std::string setText(std::mt19937& random) {
    return set("debug.fault.text", std::string(random() % 92, static_cast<char>('a' + random() % 26)));
}

Publisher::Publisher(What what, unsigned seed, std::chrono::microseconds longestPause)
    : mProcess([=] {
          std::mt19937 random(seed);
          for (;;) {
              std::string error = setText(random);
              for (auto count = random() % 4; count > 0 && what == What::ANYTHING; --count) {
                  error += setAny(random);
              }
              if (!(error + publish()).empty()) {
                  return 1;
              }
              if (longestPause.count() > 0) {
                  std::this_thread::sleep_for(longestPause * (random() % 1000) / 1000);
              }
          }
      }) {}

}  // namespace faults
