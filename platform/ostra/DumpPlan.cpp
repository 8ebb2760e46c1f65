#include "ostra/DumpPlan.h"

#include "io/RecordName.h"
#include "ostra/DumpPlace.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr int MAX_FOLDERS_A_SECOND = 1000;
constexpr mode_t FOLDER_MODE = 0755;

}  // namespace

DumpPlan planDump(std::uint32_t number) {
    DumpPlace place = findDumpPlace();
    DumpPlan plan;
    plan.number = number;
    plan.base = std::filesystem::absolute(place.base).lexically_normal().string();
    while (plan.base.size() > 1 && plan.base.back() == '/') {
        plan.base.pop_back();
    }
    plan.name = recordName() + '-';
    plan.runtimeDirectory = std::move(place.noticeDirectory);
    return plan;
}

std::string makeDumpFolder(const DumpPlan& plan, std::string& error) {
    std::error_code failure;
    std::filesystem::create_directories(plan.base, failure);
    if (failure) {
        error = plan.base + ": " + failure.message();
        return {};
    }
    std::string folder;
    int result = 0;
    for (int i = 1; i <= MAX_FOLDERS_A_SECOND; ++i) {
        folder = plan.base + '/' + plan.name + std::to_string(i);
        result = mkdir(folder.c_str(), FOLDER_MODE) == 0 ? 0 : errno;
        if (result != EEXIST) {
            break;
        }
    }
    if (result == 0) {
        return folder;
    }
    error = folder + ": " + std::generic_category().message(result);
    return {};
}

}  // namespace platform
