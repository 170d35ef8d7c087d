#include "lifecycle/AppLifecycleController.h"

#include "base/WeakCallback.h"
#include "lifecycle/InstalledCopy.h"
#include "lifecycle/LifecycleMessages.h"
#include "platform/Background.h"
#include "platform/common/FolderBundle.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace quillmere {

using lifecycleMessages::Notice;

namespace {

/// The user's default that remembers for which installation the invitation was shown.
constexpr const char* promptKey = "Quillmere.defaultPrompt.installIdentity";

LifecycleNotice noticeOf(const Notice& notice) {
    return {notice.title, notice.text};
}

FileAttributes attributesOf(const FileUrl& folder) {
    struct statx facts{};
    if (::statx(AT_FDCWD, folder.path().c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &facts) != 0)
        return {};
    FileAttributes attributes;
    attributes.fileSystemNumber = makedev(facts.stx_dev_major, facts.stx_dev_minor);
    attributes.fileNumber = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME) {
        char nanoseconds[16];
        std::snprintf(nanoseconds, sizeof nanoseconds, "%09u", facts.stx_btime.tv_nsec);
        attributes.creationDate = std::to_string(facts.stx_btime.tv_sec) + "." + nanoseconds;
    }
    return attributes;
}

std::string text(const std::optional<uint64_t>& number) {
    return number ? std::to_string(*number) : std::string();
}

} // namespace

AppLifecycleController::AppLifecycleController(std::weak_ptr<platform::Window> owner, Host host)
    : owner_(std::move(owner)), host_(std::move(host)) {}

bool AppLifecycleController::installedBundle(const FileUrl& bundle, const std::optional<std::string>& identifier,
                                             const std::vector<FileUrl>& applications) {
    if (identifier != bundleIdentifier || bundle.lastPathComponent() != bundleName)
        return false;
    const FileUrl parent = normalised(bundle).parent();
    return std::ranges::any_of(applications, [&](const FileUrl& folder) { return normalised(folder) == parent; });
}

std::string AppLifecycleController::installationIdentity(const FileUrl& bundle, const FileAttributes& attributes) {
    return bundle.standardized().path() + "|" + text(attributes.fileSystemNumber) + "|" + text(attributes.fileNumber) +
           "|" + attributes.creationDate.value_or("");
}

bool AppLifecycleController::installed() const {
    return installedBundle(host_.bundle.url(), host_.bundle.identifier(), applicationsFolders(host_.home));
}

std::string AppLifecycleController::installIdentity() const {
    const FileUrl bundle = host_.bundle.url();
    return installationIdentity(bundle, attributesOf(bundle));
}

void AppLifecycleController::present(LifecycleSheet sheet, Dismissal dismissal) {
    const auto window = owner_.lock();
    if (!window || host_.dialogs.hasSheet(*window))
        return;
    for (auto& [title, action] : sheet.actions)
        action = weakly(weak_from_this(), [action](AppLifecycleController& self) { self.dismiss(action); });
    if (dismissal == Dismissal::byCloseButton)
        sheet.close = weakly(weak_from_this(), [](AppLifecycleController& self) { self.dismiss([] {}); });
    auto spec = sheet.build(host_.toolkit.hasSymbol(sheet.symbol));
    sheet_ = spec.content;
    host_.dialogs.beginSheet(*window, std::move(spec));
}

void AppLifecycleController::dismiss(std::function<void()> completion) {
    if (sheet_)
        if (const auto window = owner_.lock())
            host_.dialogs.endSheet(*window);
    sheet_.reset();
    host_.executors.main().post(std::move(completion));
}

void AppLifecycleController::showFirstRunIfNeeded() {
    if (!installed())
        return;
    const std::string identity = installIdentity();
    if (host_.defaults.string(promptKey) == identity)
        return;
    const auto window = owner_.lock();
    if (!window || host_.dialogs.hasSheet(*window) || removing_)
        return;
    const auto choose = weakly(weak_from_this(), [](AppLifecycleController& self) { self.chooseDefaultType(); });
    present({.title = lifecycleMessages::invitation.title,
             .symbol = "doc.on.doc",
             .message = lifecycleMessages::invitation.text,
             .actions = {{lifecycleMessages::setDefault, choose}}},
            Dismissal::byCloseButton);
    host_.defaults.setString(promptKey, identity);
}

void AppLifecycleController::chooseDefaultType() {
    if (removing_)
        return;
    if (!installed())
        return explain(noticeOf(lifecycleMessages::installFirst));
    const auto window = owner_.lock();
    if (!window || host_.dialogs.hasSheet(*window))
        return;
    host_.dialogs.openPanel(
        *window, {.title = lifecycleMessages::choosePanel.title, .message = lifecycleMessages::choosePanel.text},
        weakly(weak_from_this(), [](AppLifecycleController& self, const std::optional<FileUrl>& example) {
            if (example)
                self.setDefault(*example);
        }));
}

void AppLifecycleController::setDefault(const FileUrl& example) {
    const std::string extension = example.lowerExtension();
    const auto type = host_.contentTypes.mimeType(extension);
    switch (exampleChoice(extension, supportedExtensions(host_.bundle), type)) {
    case ExampleChoice::unsupported:
        return notify(noticeOf(lifecycleMessages::unsupportedType));
    case ExampleChoice::undeclared:
        host_.workspace.reveal(example);
        return notify(noticeOf(lifecycleMessages::undeclaredType));
    case ExampleChoice::ask:
        return askForDefault(extension, *type);
    }
}

void AppLifecycleController::askForDefault(const std::string& extension, const std::string& type) {
    struct Answer {
        std::optional<std::string> error;
        std::optional<FileUrl> current;
    };
    platform::runInBackground(
        host_.executors.utility(), host_.executors.main(), weak_from_this(),
        [workspace = &host_.workspace, bundle = host_.bundle.url(), type] {
            auto error = workspace->setDefaultApplication(bundle, type);
            return Answer{.error = std::move(error), .current = workspace->applicationFor(type)};
        },
        [extension](AppLifecycleController& self, const platform::Outcome<Answer>& outcome) {
            Answer answer;
            if (const auto* failure = std::get_if<platform::Failure>(&outcome))
                answer.error = failure->message;
            else if (const auto* given = std::get_if<Answer>(&outcome))
                answer = *given;
            self.notify(defaultResult(extension, self.host_.bundle.url(), answer.current, answer.error));
        });
}

void AppLifecycleController::confirmUninstall() {
    if (removing_)
        return;
    if (!installed())
        return explain(noticeOf(lifecycleMessages::notInstalled));
    const auto remove = weakly(weak_from_this(), [](AppLifecycleController& self) { self.removeInstalledApp(); });
    present({.title = lifecycleMessages::confirmUninstall.title,
             .symbol = "trash",
             .message = lifecycleMessages::confirmUninstall.text,
             .actions = {{lifecycleMessages::cancel, [] {}}, {lifecycleMessages::uninstall, remove}},
             .last = LastAction::destructive},
            Dismissal::byAction);
}

bool AppLifecycleController::isVerified(const FileUrl& bundle) const {
    return platform::FolderBundle(bundle).identifier() == bundleIdentifier &&
           ::access(bundle.appending(bundlePropertyList).path().c_str(), R_OK) == 0;
}

void AppLifecycleController::removeInstalledApp() {
    if (!installed() || removing_)
        return;
    const FileUrl target = normalised(host_.bundle.url());
    if (!isVerified(target))
        return notify({lifecycleMessages::notRemoved, lifecycleMessages::notVerified});
    removing_ = true;
    platform::runInBackground(
        host_.executors.utility(), host_.executors.main(), weak_from_this(),
        [workspace = &host_.workspace, target] { return workspace->recycle({target}); },
        [target](AppLifecycleController& self, const platform::Outcome<platform::Recycled>& outcome) {
            platform::Recycled recycled;
            if (const auto* failure = std::get_if<platform::Failure>(&outcome))
                recycled.error = failure->message;
            else if (const auto* done = std::get_if<platform::Recycled>(&outcome))
                recycled = *done;
            self.finishRemoval(target, recycled);
        });
}

void AppLifecycleController::finishRemoval(const FileUrl& target, const platform::Recycled& recycled) {
    if (!recycled.error && recycled.moved.contains(target)) {
        host_.defaults.remove(promptKey);
        host_.application.terminate();
        return;
    }
    removing_ = false;
    notify({lifecycleMessages::notRemoved, recycled.error.value_or(lifecycleMessages::notMoved)});
}

void AppLifecycleController::explain(const LifecycleNotice& notice) {
    if (const auto window = owner_.lock(); window && !host_.dialogs.hasSheet(*window))
        notify(notice);
}

void AppLifecycleController::notify(const LifecycleNotice& notice) {
    if (const auto window = owner_.lock())
        host_.dialogs.alert(*window, {.message = notice.title, .informative = notice.text, .buttons = {"OK"}},
                            [](size_t) {});
}

} // namespace quillmere
