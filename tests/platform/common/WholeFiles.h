#pragma once

#include <string>
#include <string_view>

namespace quillmere::tests {

/// The smallest files that begin and end as their formats demand, around a text.
inline std::string pdfAround(std::string_view text) {
    const std::string body = "%PDF-1.4\n<<\n" + std::string(text) + ">>\n";
    return body + "xref\n0 0\ntrailer\n<<>>\nstartxref\n" + std::to_string(body.size()) + "\n%%EOF\n";
}

inline std::string mediaAround(std::string_view text) {
    const auto box = [](std::string_view type, const std::string& contents) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>((contents.size() + 8) >> shift & 0xff);
        return bytes.append(type) + contents;
    };
    return box("ftyp", "isom") + box("mdat", "<<\n" + std::string(text) + ">>\n") + box("moov", "");
}

/// The text in one of them.
inline std::string textInside(const std::string& file) {
    const size_t begin = file.find("<<\n");
    const size_t end = file.find(">>\n", begin);
    return begin == std::string::npos || end == std::string::npos ? "no text" : file.substr(begin + 3, end - begin - 3);
}

} // namespace quillmere::tests
