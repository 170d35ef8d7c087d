#include "appearance/GlassSurface.h"

namespace quillmere {

view::ViewRef glassSurface(view::ViewRef content, double radius) {
    auto glass = view::View::make(view::Glass{.radius = radius});
    glass->add(std::move(content));
    return glass;
}

} // namespace quillmere
