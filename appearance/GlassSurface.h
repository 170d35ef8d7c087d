#pragma once

#include "platform/view/View.h"

namespace quillmere {

/// A rounded glass surface that holds the content, edge to edge. Whoever asked for it places it.
view::ViewRef glassSurface(view::ViewRef content, double radius);

} // namespace quillmere
