#include "platform/headless/HeadlessServices.h"

#include "platform/headless/HeadlessExecutors.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace quillmere::platform {

void HeadlessDialogs::openPanel(Window&, const OpenPanelSpec& spec,
                                std::function<void(std::optional<FileUrl>)> completion) {
    panels.push_back(spec);
    openPanels_.push_back(std::move(completion));
}

void HeadlessDialogs::alert(Window&, const AlertSpec& spec, std::function<void(size_t)> completion) {
    alerts.push_back(spec);
    openAlerts_.push_back(std::move(completion));
}

bool HeadlessDialogs::hasSheet(const Window&) const {
    return sheet || !openAlerts_.empty() || !openPanels_.empty();
}

void HeadlessDialogs::beginSheet(Window&, SheetSpec spec) {
    sheet = std::move(spec);
}

bool HeadlessDialogs::answerAlert(size_t button) {
    if (openAlerts_.empty())
        return false;
    main_.post([completion = std::move(openAlerts_.front()), button] { completion(button); });
    openAlerts_.pop_front();
    return true;
}

void HeadlessDialogs::colorPanel(Window&, ColorPanelSpec spec) {
    colors = std::move(spec);
}

bool HeadlessDialogs::answerPanel(std::optional<FileUrl> file) {
    if (openPanels_.empty())
        return false;
    main_.post([completion = std::move(openPanels_.front()), file = std::move(file)] { completion(file); });
    openPanels_.pop_front();
    return true;
}

std::optional<std::string> HeadlessDefaults::read(const std::map<std::string, std::string>& values,
                                                  const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

void HeadlessDefaults::remove(const std::string& key) {
    dataValues.erase(key);
    strings.erase(key);
}

bool HeadlessPasteboard::setString(const std::string& newText) {
    if (refuses)
        return false;
    text = newText;
    return true;
}

int HeadlessWorkspace::registerApplication(const FileUrl& bundle) {
    const std::lock_guard guard(lock_);
    registered_.push_back(bundle);
    return registrationStatus;
}

std::optional<std::string> HeadlessWorkspace::setDefaultApplication(const FileUrl& bundle, const std::string& type) {
    if (!keepsDefaults)
        defaults.insert_or_assign(type, bundle);
    return error;
}

std::optional<FileUrl> HeadlessWorkspace::applicationFor(const std::string& type) {
    const auto found = defaults.find(type);
    return found == defaults.end() ? std::nullopt : std::optional(found->second);
}

Recycled HeadlessWorkspace::recycle(const std::vector<FileUrl>& files) {
    Recycled recycled{.error = error};
    if (error || keepsFiles || !trash)
        return recycled;
    for (const auto& file : files) {
        const FileUrl place = trash->appending(file.lastPathComponent());
        std::filesystem::rename(file.filesystemPath(), place.filesystemPath());
        recycled.moved.insert(file);
    }
    return recycled;
}

std::vector<FileUrl> HeadlessWorkspace::registered() const {
    const std::lock_guard guard(lock_);
    return registered_;
}

std::optional<std::string> HeadlessContentTypes::mimeType(const std::string& extension) const {
    const auto found = types.find(extension);
    return found == types.end() ? std::nullopt : std::optional(found->second);
}

ImageOutcome HeadlessImageCodec::writeThumbnail(const FileUrl& source, const FileUrl& output, int maxSide) {
    ++calls;
    lastMaxSide = maxSide;
    std::ifstream in(source.filesystemPath(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (!in || bytes.starts_with("broken"))
        return ImageOutcome::unreadable;
    meanwhile();
    if (refuses)
        return ImageOutcome::writeFailed;
    std::ofstream out(output.filesystemPath(), std::ios::binary);
    out << bytes;
    return out.flush() ? ImageOutcome::written : ImageOutcome::writeFailed;
}

} // namespace quillmere::platform
