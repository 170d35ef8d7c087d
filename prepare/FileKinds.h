#pragma once

#include <string>
#include <string_view>

namespace quillmere {

/// The road of a file, by its lower-case extension. One of transport streams is media by its contents, see
/// FilePreparation.
enum class FileKind { image, officeWords, officeSlides, legacyVideo, legacyAudio, other };

struct FileKindRow {
    FileKind kind;
    std::string_view extensions; // separated by blanks
};

/// All extensions that are converted, each once; what is not here is "other". One row a line, so that a script can read
/// it too.
inline constexpr FileKindRow fileKindTable[] = {
    {FileKind::image, "tif tiff heic heif jp2 j2k psd icns raw dng cr2 nef arw"},
    {FileKind::officeWords, "doc docx docm dot dotx dotm rtf odt ott fodt wpd wps"},
    {FileKind::officeSlides, "ppt pptx pptm pps ppsx ppsm pot potx potm odp otp fodp"},
    {FileKind::legacyVideo, "wmv asf avi mpg mpeg mpe m1v m2v ts mts m2ts vob dv divx flv rm rmvb 3gp 3g2"},
    {FileKind::legacyAudio, "wma ac3 eac3 amr awb 3ga"},
};

FileKind fileKind(const std::string& extension);

} // namespace quillmere
