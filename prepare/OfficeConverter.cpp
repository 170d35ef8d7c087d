#include "prepare/OfficeConverter.h"

#include "base/Errors.h"
#include "base/Text.h"

#include <cctype>
#include <cerrno>
#include <unistd.h>

namespace quillmere {

namespace {

/// LibreOffice puts a lock file beside a document, whose name has eight bytes more; no name has more than 255.
constexpr size_t longestName = 247;

std::string nameWithoutExtension(const FileUrl& url) {
    std::string name = url.lastPathComponent();
    if (const auto ext = url.pathExtension(); !ext.empty())
        name.resize(name.size() - ext.size() - 1);
    return name;
}

/// LibreOffice opens no path that is not valid UTF-8, and none with a very long name; such a file gets a link in the
/// work folder.
FileUrl underReadableName(const FileUrl& original, const FileUrl& work) {
    if (isValidUtf8(original.path()) && original.lastPathComponent().size() <= longestName)
        return original;
    const std::string ext = original.pathExtension();
    const bool isOrdinary = isValidUtf8(ext) && ext.size() <= longestName / 2;
    const FileUrl link = work.appending("document." + (isOrdinary ? ext : "doc"));
    if (::symlink(original.path().c_str(), link.path().c_str()) != 0)
        throwFileError(errno, original.path());
    return link;
}

/// LibreOffice decodes what looks percent-encoded in the folder for its results, so that has to be encoded once more.
std::string undecoded(const std::string& path) {
    const auto isDigit = [&](size_t at) {
        return at < path.size() && std::isxdigit(static_cast<unsigned char>(path[at])) != 0;
    };
    std::string encoded;
    for (size_t i = 0; i < path.size(); ++i) {
        encoded += path[i];
        if (path[i] == '%' && isDigit(i + 1) && isDigit(i + 2))
            encoded += "25";
    }
    return encoded;
}

} // namespace

std::optional<FileUrl> OfficeConverter::convert(const FileUrl& original, const WorkFolder& work) const {
    const FileUrl folder = work->url();
    const FileUrl document = underReadableName(original, folder);
    runner_.run(
        {.programs = programs_,
         .arguments = {"-env:UserInstallation=" + folder.appending("profile").uri(), "--headless", "--norestore",
                       "--convert-to", "pdf", "--outdir", undecoded(folder.path()), document.path()},
         .original = original,
         .work = work,
         .fonts = platform::UserFonts::readable});
    return folder.appending(nameWithoutExtension(document) + ".pdf");
}

} // namespace quillmere
