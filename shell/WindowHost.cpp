#include "appearance/HexColor.h"
#include "base/WeakCallback.h"
#include "files/AppAddress.h"
#include "shell/QuillmereDelegate.h"
#include "shell/Toolbar.h"

namespace quillmere {

using platform::MenuAction;
using platform::NavigationDecision;

void QuillmereDelegate::performMenuAction(MenuAction action) {
    assertMainThread();
    if (action == MenuAction::openDialog)
        openDialog();
    else if (action == MenuAction::showSettings)
        showSettings();
}

void QuillmereDelegate::openDialog() {
    platform_.dialogs.openPanel(
        *window_,
        {.title = "Open File or Folder", .files = true, .folders = true, .types = platform::AllowedTypes::all},
        weakly(weak_from_this(), [](QuillmereDelegate& self, const std::optional<FileUrl>& chosen) {
            if (chosen)
                self.open(*chosen, std::nullopt, std::nullopt);
        }));
}

/// The window's tint is all that can be set so far; it is applied and kept at every step of the choice.
void QuillmereDelegate::showSettings() {
    platform_.dialogs.colorPanel(*window_,
                                 {.color = colorFromHex(preferences_.tint),
                                  .onChange = weakly(weak_from_this(), [](QuillmereDelegate& self, view::Color color) {
                                      self.preferences_.tint = hexFromColor(color);
                                      self.preferences_.save(self.platform_.defaults);
                                      self.applyAppearance();
                                  })});
}

void QuillmereDelegate::showStartupLoading() {
    if (startupLoading_ || !content_)
        return;
    startupLoading_ = makeLoadingIndicator();
    content_->addAbove(startupLoading_, *toolbar_);
}

void QuillmereDelegate::hideStartupLoading() {
    if (!startupLoading_)
        return;
    startupLoading_->removeFromParent();
    startupLoading_ = nullptr;
}

void QuillmereDelegate::showStartupError(const std::string& description) {
    hideStartupLoading();
    platform_.dialogs.alert(
        *window_, {.message = "Quillmere could not start its viewer", .informative = description, .buttons = {}},
        [](size_t) {});
}

void QuillmereDelegate::windowDidEnterFullScreen() {
    send({{"type", "state"}, {"maximized", true}});
}

void QuillmereDelegate::windowDidExitFullScreen() {
    send({{"type", "state"}, {"maximized", false}});
}

void QuillmereDelegate::windowDidBecomeKey() {
    send({{"type", "active"}, {"value", true}});
    if (ready_ && lifecycle_)
        lifecycle_->showFirstRunIfNeeded();
}

void QuillmereDelegate::windowDidResignKey() {
    send({{"type", "active"}, {"value", false}});
}

NavigationDecision QuillmereDelegate::decideNavigation(const std::optional<std::string>& url) {
    return url && isAppAddress(*url) ? NavigationDecision::allow : NavigationDecision::cancel;
}

void QuillmereDelegate::didFailProvisionalNavigation(const std::string& description) {
    assertMainThread();
    showStartupError(description);
}

void QuillmereDelegate::contentProcessDidTerminate() {
    assertMainThread();
    if (!pending_) {
        if (showingContainer_ && currentContainerToken_) {
            pendingContainerRefresh_ = currentContainerToken_;
        } else {
            pending_ = currentOriginal_;
            pendingContainerToken_ = currentContainerToken_;
            pendingDisplayName_ = currentDisplayName_;
        }
    }
    containerGeneration_->raise();
    nextRequest();
    currentGrant_.reset();
    ready_ = false;
    showStartupLoading();
    web_->web().reload();
}

} // namespace quillmere
