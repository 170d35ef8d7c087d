#include "helpers/archive-reader/CharacterConverters.h"

#include <array>
#include <cstdint>

namespace quillmere {

namespace {

/// The code pages of DOS and Windows that archives name, and what the formats ask for by themselves.
constexpr std::array charsets{"CP932",  "CP437",     "CP850",  "CP852",    "CP866",   "CP936",
                              "CP949",  "CP950",     "CP1250", "CP1251",   "CP1252",  "EUC-JP",
                              "KOI8-R", "SHIFT_JIS", "UTF-16", "UTF-16BE", "UTF-16LE"};

} // namespace

CharacterConverters::CharacterConverters() {
    constexpr const char* ours = "UTF-8";
    for (const char* charset : charsets)
        for (const auto& [to, from] : {std::pair{ours, charset}, {charset, ours}})
            if (iconv_t opened = ::iconv_open(to, from); reinterpret_cast<intptr_t>(opened) != -1)
                loaded_.emplace_back(opened);
}

} // namespace quillmere
