#include "files/AppAddress.h"

#include "base/Text.h"

namespace quillmere {

namespace {

struct Parts {
    std::string_view scheme;
    std::string_view host;
    std::string_view path;
};

/// The generic syntax of RFC 3986, as far as it is needed: scheme, host without user and port, path.
std::optional<Parts> split(std::string_view url) {
    const auto colon = url.find("://");
    if (colon == std::string_view::npos)
        return std::nullopt;
    Parts parts;
    parts.scheme = url.substr(0, colon);
    std::string_view rest = url.substr(colon + 3);
    rest = rest.substr(0, rest.find_first_of("?#"));
    const auto slash = std::min(rest.find('/'), rest.size());
    std::string_view authority = rest.substr(0, slash);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    parts.host = authority.substr(0, authority.find(':'));
    parts.path = rest.substr(slash);
    return parts;
}

bool isApp(const Parts& parts) {
    return parts.scheme == appScheme && parts.host == appHost;
}

} // namespace

bool isAppAddress(std::string_view url) {
    const auto parts = split(url);
    return parts && isApp(*parts);
}

std::optional<std::string> appPath(std::string_view url) {
    const auto parts = split(url);
    if (!parts || !isApp(*parts))
        return std::nullopt;
    auto path = percentDecode(parts->path);
    if (!path || path->find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

} // namespace quillmere
