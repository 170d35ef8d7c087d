#include "shell/MainWindow.h"

#include "base/Fatal.h"
#include "shell/Toolbar.h"

namespace quillmere {

MainWindow::MainWindow(const platform::Platform& platform, std::weak_ptr<platform::WindowClient> client)
    : toolkit_(platform.toolkit), dialogs_(platform.dialogs),
      window_(toolkit_.makeWindow({.contentSize = {.width = 1240, .height = 800},
                                   .minimumSize = {.width = 640, .height = 440},
                                   .title = "Quillmere",
                                   .autosaveName = "Quillmere.MainWindow",
                                   .titleHidden = true,
                                   .titleBarTransparent = true,
                                   .opaque = false})),
      content_(view::View::make(view::Overlay{})) {
    window_->setClient(std::move(client));
    window_->center();
    window_->setContent(content_);
    content_->add(background_.view());
}

void MainWindow::addPage(const view::ViewRef& page) {
    content_->add(page);
}

void MainWindow::addToolbar(Actions actions) {
    if (!toolkit_.hasSymbol(folderSymbol) || !toolkit_.hasSymbol(settingsSymbol))
        fatalStop("a toolbar symbol is missing");
    const Toolbar toolbar = makeToolbar(std::move(actions.openDialog), std::move(actions.showSettings));
    toolbar_ = toolbar.surface;
    settingsButton_ = toolbar.settingsButton;
    content_->add(toolbar_);
}

void MainWindow::showStartupLoading() {
    if (startupLoading_)
        return;
    startupLoading_ = makeLoadingIndicator();
    content_->addAbove(startupLoading_, *toolbar_);
}

void MainWindow::hideStartupLoading() {
    if (!startupLoading_)
        return;
    startupLoading_->removeFromParent();
    startupLoading_ = nullptr;
}

void MainWindow::showStartupError(const std::string& description) {
    hideStartupLoading();
    dialogs_.alert(*window_,
                   {.message = "Quillmere could not start its viewer", .informative = description, .buttons = {}},
                   [](size_t) {});
}

void MainWindow::showInTitle(const std::string& name, std::optional<FileUrl> file) {
    window_->setTitle(name + " — Quillmere");
    window_->setRepresentedFile(std::move(file));
}

bool MainWindow::showPreview(const FileUrl& file, double top) {
    auto shown = toolkit_.makeFilePreview(file);
    if (!shown)
        return false;
    shown->placement = view::Fill{.insets = {.top = top}};
    shown->tag = "preview";
    content_->addBelow(shown, *toolbar_);
    preview_ = std::move(shown);
    return true;
}

void MainWindow::removePreview() {
    if (!preview_)
        return;
    preview_->removeFromParent();
    preview_ = nullptr;
}

} // namespace quillmere
