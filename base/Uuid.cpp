#include "base/Uuid.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cctype>

namespace quillmere {

std::string newUuid() {
    std::string text = boost::uuids::to_string(boost::uuids::random_generator_pure()());
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

bool isUuid(std::string_view text) {
    if (text.size() != 36)
        return false;
    for (size_t at = 0; at < text.size(); ++at) {
        const bool hyphen = at == 8 || at == 13 || at == 18 || at == 23;
        if (hyphen ? text[at] != '-' : std::isxdigit(static_cast<unsigned char>(text[at])) == 0)
            return false;
    }
    return true;
}

} // namespace quillmere
