// The library and the companion's stand-in, compiled and linked against the platform's own libutils and
// liblog.

#include "gui/WidgetsSettings.h"
#include "utils/SystemInfoHelper.h"

#include <android/log.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <ostra/Ostra.h>

#include <filesystem>
#include <fstream>

namespace {

TEST(AndroidLibraries, NameTheValuesOfADump) {
    std::vector<Ostra::DumpWidgetMeta> metas = gui::gWidgetsMeta;
    EXPECT_EQ(metas[2].name.string(), gui::gWidgetsMeta[2].name.string())
        << "the platform's share their bytes";
    metas.insert(metas.begin(), {android::String8("First"), 0, 0});

    const std::string folder = testing::TempDir() + "/kordanix-android-libraries";
    std::filesystem::create_directories(folder);
    setenv("KORDANIX_DUMP_DIR", folder.c_str(), 1);
    Ostra::startDumping(metas);
    Ostra::finishDumping();
    std::string header;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().filename() == "frames.csv") {
            std::getline(std::ifstream(entry.path()), header);
        }
    }
    std::filesystem::remove_all(folder);
    EXPECT_THAT(header, testing::HasSubstr("First,Fps,FpsMedian,FpsStability(%),"));
}

TEST(AndroidLibraries, TakeTheLog) {
    testing::internal::CaptureStderr();
    utils::checkVendor();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Fail to read Vendor"));
    Dl_info origin{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&__android_log_print), &origin), 0);
    EXPECT_THAT(origin.dli_fname, testing::HasSubstr("liblog")) << "and not the stand-in's";
}

}  // namespace
