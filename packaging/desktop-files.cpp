#include "platform/common/FolderBundle.h"
#include "platform/gtk/desktop/DesktopServices.h"

#include <cstdio>

/// desktop-files BUNDLE FOLDER: writes into FOLDER what the program writes into a user's data folder when it registers
/// itself, so that a package carries the same entry, types and icons.
int main(int argc, char** argv) {
    using namespace quillmere;
    if (argc != 3) {
        std::fputs("usage: desktop-files BUNDLE FOLDER\n", stderr);
        return 2;
    }
    const platform::FolderBundle bundle{FileUrl(argv[1])};
    const platform::gtk::DesktopContentTypes types;
    const int status =
        platform::gtk::DesktopWorkspace(FileUrl(argv[2]), bundle, types).registerApplication(FileUrl(argv[1]));
    // Without the database's tool the entry is written all the same, and the package's system makes its own.
    return status == 127 ? 0 : status;
}
