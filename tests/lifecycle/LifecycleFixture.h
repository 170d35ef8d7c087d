#pragma once

#include "lifecycle/AppLifecycleController.h"
#include "lifecycle/InstalledCopy.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <gmock/gmock.h>

namespace quillmere {

/// A controller over a copy that lies in the user's applications folder.
class LifecycleTest : public testing::Test, protected tests::Sandbox {
protected:
    static constexpr const char* promptKey = "Quillmere.defaultPrompt.installIdentity";

    LifecycleTest() {
        desktop_.bundle.folder = install();
        desktop_.workspace.trash = folder("trash");
    }
    ~LifecycleTest() override { desktop_.executors.main().end(); }

    FileUrl install(const std::string& place = "home/Applications/Quillmere.app") {
        write(place + "/Contents/Info.plist", propertyListOf(bundleIdentifier));
        return at(place);
    }
    static std::string propertyListOf(const std::string& identifier) {
        return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier +
               "</string></dict></plist>";
    }

    AppLifecycleController& lifecycle() {
        if (!lifecycle_)
            lifecycle_ = std::make_shared<AppLifecycleController>(
                window_, AppLifecycleController::Host{.application = desktop_.application,
                                                      .executors = desktop_.executors,
                                                      .toolkit = desktop_.toolkit,
                                                      .dialogs = desktop_.dialogs,
                                                      .defaults = desktop_.defaults,
                                                      .workspace = desktop_.workspace,
                                                      .contentTypes = desktop_.contentTypes,
                                                      .bundle = desktop_.bundle,
                                                      .home = desktop_.directories.home});
        return *lifecycle_;
    }

    void settle() {
        desktop_.executors.main().runPending(); // may begin work
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
        desktop_.executors.main().runPending();
    }
    /// Presses a button of the sheet that is shown.
    void press(const std::string& tag) {
        ASSERT_TRUE(desktop_.dialogs.sheet) << tag;
        const auto button = desktop_.dialogs.sheet->content->find(tag);
        ASSERT_TRUE(button) << tag;
        view::press(*button);
    }
    std::string sheetTitle() const {
        return desktop_.dialogs.sheet ? desktop_.dialogs.sheet->content->accessibilityLabel : std::string();
    }
    /// The alert that came last, as "title: text", answered; nothing when none came since.
    std::string alert() {
        settle();
        if (!desktop_.dialogs.answerAlert())
            return {};
        settle();
        const auto& last = desktop_.dialogs.alerts.back();
        EXPECT_EQ(last.buttons, std::vector<std::string>{"OK"});
        return last.message + ": " + last.informative;
    }
    /// Chooses an example file in the panel that is open, and returns what is said then.
    std::string choose(const std::string& name) {
        EXPECT_TRUE(desktop_.dialogs.answerPanel(write("examples/" + name)));
        return alert();
    }

    platform::HeadlessPlatform desktop_{root()};
    std::shared_ptr<platform::Window> window_ = desktop_.toolkit.makeWindow(platform::WindowSpec{});
    std::shared_ptr<AppLifecycleController> lifecycle_;
};

} // namespace quillmere
