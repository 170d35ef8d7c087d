#include "platform/common/FolderBundle.h"
#include "platform/gtk/desktop/DesktopRegistration.h"
#include "platform/gtk/desktop/DesktopServices.h"
#include "platform/gtk/desktop/DesktopWorkspace.h"

#include <cstdio>
#include <exception>
#include <string_view>

namespace {

using namespace quillmere;

constexpr const char* usage = "desktop-files add|preview|remove BUNDLE FOLDER\n"
                              "add      writes into FOLDER what the program writes into a user's data folder when it\n"
                              "         registers itself\n"
                              "preview  has the desktop ask it for previews\n"
                              "remove   takes both back\n";
constexpr int missingTool = 127;

int carryOut(std::string_view action, const FileUrl& bundle, const FileUrl& folder) {
    const platform::gtk::DesktopRegistration registration(folder);
    if (action == "preview") {
        registration.answerPreviews(bundle);
    } else if (action == "remove") {
        registration.remove(bundle);
    } else {
        const platform::gtk::DesktopContentTypes types;
        const int status =
            registration.add(bundle, platform::gtk::documentMimeTypes(platform::FolderBundle(bundle), types));
        // Without the database's tool the entry is written all the same; the next that has the tool makes it known.
        return status == missingTool ? 0 : status;
    }
    return 0;
}

} // namespace

/// What an installer does for the desktop: the same entry, types and icons that the program itself would write.
int main(int argc, char** argv) {
    const std::string_view action = argc == 4 ? argv[1] : "";
    if (action != "add" && action != "preview" && action != "remove") {
        std::fputs(usage, stderr);
        return 2;
    }
    try {
        return carryOut(action, FileUrl(argv[2]), FileUrl(argv[3]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "desktop-files: %s\n", error.what());
        return 1;
    }
}
