#include "prepare/FileKinds.h"

#include <set>

namespace quillmere {

namespace {

using Extensions = std::set<std::string>;

const Extensions& images() {
    static const Extensions extensions{"tif",  "tiff", "heic", "heif", "jp2", "j2k", "psd",
                                       "icns", "raw",  "dng",  "cr2",  "nef", "arw"};
    return extensions;
}

const Extensions& officeWords() {
    static const Extensions extensions{"doc", "docx", "docm", "dot",  "dotx", "dotm",
                                       "rtf", "odt",  "ott",  "fodt", "wpd",  "wps"};
    return extensions;
}

const Extensions& officeSlides() {
    static const Extensions extensions{"ppt", "pptx", "pptm", "pps", "ppsx", "ppsm",
                                       "pot", "potx", "potm", "odp", "otp",  "fodp"};
    return extensions;
}

const Extensions& legacyMedia() {
    static const Extensions extensions{"wmv", "asf",  "avi", "mpg",  "mpeg", "mpe", "m1v", "m2v",  "ts",
                                       "mts", "m2ts", "vob", "dv",   "divx", "flv", "rm",  "rmvb", "3gp",
                                       "3g2", "wma",  "ac3", "eac3", "amr",  "awb", "3ga"};
    return extensions;
}

const Extensions& audio() {
    static const Extensions extensions{"wma",  "ac3", "eac3", "amr", "awb", "3ga", "aac",
                                       "flac", "ogg", "opus", "mp3", "m4a", "wav"};
    return extensions;
}

} // namespace

FileKind fileKind(const std::string& extension) {
    if (images().contains(extension))
        return FileKind::image;
    if (officeWords().contains(extension))
        return FileKind::officeWords;
    if (officeSlides().contains(extension))
        return FileKind::officeSlides;
    if (legacyMedia().contains(extension))
        return audio().contains(extension) ? FileKind::legacyAudio : FileKind::legacyVideo;
    return FileKind::other;
}

} // namespace quillmere
