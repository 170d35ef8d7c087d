#include "appearance/WindowAppearance.h"

#include "appearance/BackgroundPhoto.h"
#include "appearance/HexColor.h"
#include "appearance/PageAppearance.h"
#include "base/WeakCallback.h"
#include "platform/Background.h"

namespace quillmere {

WindowAppearance::WindowAppearance(Host& host, Services services)
    : host_(host), services_(std::move(services)), preferences_(AppearancePreferences::load(services_.defaults)) {}

void WindowAppearance::setPreferences(AppearancePreferences preferences) {
    preferences_ = std::move(preferences);
    applyAppearance();
}

void WindowAppearance::applyAppearance() {
    auto* background = host_.background();
    if (!background)
        return;
    background->setTint(colorFromHex(preferences_.tint));
    if (!host_.pageIsReady())
        return;
    const BackgroundPhoto photo{.support = services_.support};
    std::string customUrl;
    if (preferences_.photo == AppearancePreferences::customPhoto && photo.exists())
        customUrl = customPhotoUrl(host_.grant(photo.file()), photo.changedSeconds());
    host_.applyPlatformPreferences(pageAppearance(preferences_, customUrl));
}

void WindowAppearance::pickBackground() {
    host_.closeSettings();
    services_.dialogs.openPanel(
        host_.window(),
        {.title = "Choose Background Photo", .files = true, .folders = false, .types = platform::AllowedTypes::images},
        weakly(weak_from_this(), [](WindowAppearance& self, const std::optional<FileUrl>& chosen) {
            if (chosen)
                self.replacePhoto(*chosen);
        }));
}

void WindowAppearance::replacePhoto(const FileUrl& source) {
    platform::runInBackground(
        services_.executors.userInitiated(), services_.executors.main(), weak_from_this(),
        [source, photo = BackgroundPhoto{.support = services_.support}, images = &services_.images] {
            return photo.replace(source, *images);
        },
        [](WindowAppearance& self, const platform::Outcome<bool>& replaced) {
            if (const auto* done = std::get_if<bool>(&replaced); done && *done)
                self.usePhoto(AppearancePreferences::customPhoto);
        });
}

void WindowAppearance::clearBackground() {
    usePhoto({});
}

void WindowAppearance::usePhoto(std::string photo) {
    preferences_.photo = std::move(photo);
    preferences_.save(services_.defaults);
    applyAppearance();
}

} // namespace quillmere
