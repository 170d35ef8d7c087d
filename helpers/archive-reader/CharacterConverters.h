#pragma once

#include <iconv.h>
#include <memory>
#include <type_traits>
#include <vector>

namespace quillmere {

/// The converters that names in archives may ask for. They are libraries, loaded on first use; as long as this object
/// lives they stay loaded, also where no file can be opened any more. What the system lacks is left out.
class CharacterConverters {
public:
    CharacterConverters();

private:
    struct Closer {
        void operator()(void* converter) const { ::iconv_close(converter); }
    };
    static_assert(std::is_same_v<iconv_t, void*>);

    std::vector<std::unique_ptr<void, Closer>> loaded_;
};

} // namespace quillmere
