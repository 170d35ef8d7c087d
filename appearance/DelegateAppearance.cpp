#include "appearance/BackgroundPhoto.h"
#include "appearance/HexColor.h"
#include "appearance/PageAppearance.h"
#include "base/WeakCallback.h"
#include "bridge/OutboundMessage.h"
#include "shell/Background.h"
#include "shell/QuillmereDelegate.h"

namespace quillmere {

void QuillmereDelegate::applyAppearance() {
    assertMainThread();
    if (!background_)
        return;
    background_->setTint(colorFromHex(preferences_.tint));
    if (!ready_)
        return;
    const BackgroundPhoto photo{.support = support_};
    std::string customUrl;
    if (preferences_.photo == AppearancePreferences::customPhoto && photo.exists())
        customUrl = customPhotoUrl(localFiles_->grant(photo.file()), photo.changedSeconds());
    if (const auto script = pageCall("applyPlatformPreferences", pageAppearance(preferences_, customUrl)))
        web_->web().evaluate(*script);
}

void QuillmereDelegate::pickBackground() {
    const auto useChosen = [](QuillmereDelegate& self, const std::optional<FileUrl>& chosen) {
        if (!chosen)
            return;
        runInBackground(
            self.platform_.executors.userInitiated(), self.platform_.executors.main(), self.weak_from_this(),
            [source = *chosen, photo = BackgroundPhoto{.support = self.support_}, images = &self.platform_.images] {
                return photo.replace(source, *images);
            },
            [](QuillmereDelegate& owner, const Outcome<bool>& replaced) {
                if (const auto* done = std::get_if<bool>(&replaced); !done || !*done)
                    return;
                owner.preferences_.photo = AppearancePreferences::customPhoto;
                owner.preferences_.save(owner.platform_.defaults);
                owner.applyAppearance();
            });
    };
    platform_.dialogs.openPanel(
        *window_,
        {.title = "Choose Background Photo", .files = true, .folders = false, .types = platform::AllowedTypes::images},
        weakly(weak_from_this(), useChosen));
}

void QuillmereDelegate::clearBackground() {
    preferences_.photo.clear();
    preferences_.save(platform_.defaults);
    applyAppearance();
}

} // namespace quillmere
