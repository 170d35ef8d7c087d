#pragma once

/// All that the installation says to the user.
namespace quillmere::lifecycleMessages {

/// What stands in an alert or a sheet.
struct Notice {
    const char* title;
    const char* text;
};

inline constexpr Notice invitation{"Make Quillmere your viewer",
                                   "Choose which file types open with Quillmere. Select an example file, then confirm "
                                   "your choice with macOS."};
inline constexpr Notice installFirst{
    "Install Quillmere first",
    "Drag Quillmere.app to Applications, then open that copy to choose it as a default viewer."};
inline constexpr Notice unsupportedType{"Choose a supported file type",
                                        "This file extension is not registered by Quillmere. Choose a document, image, "
                                        "model, or another supported file instead."};
inline constexpr Notice undeclaredType{
    "Choose defaults in Finder",
    "Select a file in Finder and choose File → Get Info. Under Open with, choose Quillmere and click Change All. "
    "Repeat "
    "for each type you want. A single global setting for all file types is not applied by this app."};
inline constexpr Notice defaultKept{"Your current default was kept",
                                    "You can choose Quillmere later in Finder → Get Info → Open with."};
inline constexpr const char* defaultUpdated = "Default viewer updated";
inline constexpr const char* defaultNotChanged = "The default was not changed";
inline constexpr Notice choosePanel{"Choose a File Type",
                                    "Select an example file. macOS will ask to use Quillmere for files of that type. "
                                    "The file itself will not be changed."};
inline constexpr const char* setDefault = "Set as default…";

inline constexpr Notice confirmUninstall{"Uninstall Quillmere?",
                                         "Quillmere.app will be moved to Trash. Your documents and saved appearance "
                                         "settings will stay on this Mac."};
inline constexpr Notice notInstalled{"This copy is not installed",
                                     "Uninstall is available for Quillmere.app in Applications. A copy on a disk image "
                                     "or inside the project folder is not removed by this button."};
inline constexpr const char* notRemoved = "Quillmere was not removed";
inline constexpr const char* notVerified = "The installed application could not be verified.";
inline constexpr const char* notMoved =
    "Finder did not move the application. You can remove Quillmere.app from Applications manually.";
inline constexpr const char* cancel = "Cancel";
inline constexpr const char* later = "Later";
inline constexpr const char* uninstall = "Uninstall Quillmere";

} // namespace quillmere::lifecycleMessages
