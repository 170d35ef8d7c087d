#include "base/Sha256.h"

#include "base/Text.h"

#include <array>
#include <openssl/evp.h>
#include <stdexcept>

namespace quillmere {

std::string sha256Hex(std::string_view bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is unavailable");
    return hexadecimal({reinterpret_cast<const char*>(digest.data()), length});
}

} // namespace quillmere
