#include "appearance/BackgroundView.h"

namespace quillmere {

BackgroundView::BackgroundView()
    : view_(view::View::make(view::Overlay{})), material_(view::View::make(view::Material{})),
      tintView_(view::View::make(view::Tint{})) {
    view_->tag = "background";
    tintView_->tag = "tint";
    view_->add(material_);
    view_->add(tintView_);
}

void BackgroundView::setTint(view::Color color) {
    color.alpha = tintAlpha;
    tintView_->setTint(color);
}

} // namespace quillmere
