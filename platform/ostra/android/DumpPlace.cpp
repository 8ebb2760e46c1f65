#include "ostra/DumpPlace.h"

#include "ostra/android/FilesFolder.h"

namespace platform {

DumpPlace findDumpPlace() {
    std::string folder = ownFilesFolder();
    return {folder, folder};
}

}  // namespace platform
