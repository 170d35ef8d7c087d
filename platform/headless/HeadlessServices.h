#pragma once

#include "platform/Dialogs.h"
#include "platform/ImageCodec.h"
#include "platform/Services.h"

#include <atomic>
#include <deque>
#include <map>
#include <mutex>

namespace quillmere::platform {

class HeadlessMain;

/// Panels and alerts wait for an answer, which is delivered on a later turn of the main loop.
class HeadlessDialogs : public Dialogs {
public:
    explicit HeadlessDialogs(HeadlessMain& main) : main_(main) {}

    void openPanel(Window& window, const OpenPanelSpec& spec,
                   std::function<void(std::optional<FileUrl>)> completion) override;
    void alert(Window& window, const AlertSpec& spec, std::function<void(size_t)> completion) override;
    void colorPanel(Window& window, ColorPanelSpec spec) override;
    bool hasSheet(const Window& window) const override;
    void beginSheet(Window& window, SheetSpec spec) override;
    void endSheet(Window&) override { sheet.reset(); }

    /// Answers the panel that was opened first and is still open; false when none is.
    bool answerPanel(std::optional<FileUrl> file);
    /// Presses a button of the alert that was shown first and is still there; false when none is.
    bool answerAlert(size_t button = 0);

    std::vector<OpenPanelSpec> panels;
    std::vector<AlertSpec> alerts;
    std::optional<ColorPanelSpec> colors;
    std::optional<SheetSpec> sheet; // while it is shown

private:
    HeadlessMain& main_;
    std::deque<std::function<void(size_t)>> openAlerts_;
    std::deque<std::function<void(std::optional<FileUrl>)>> openPanels_;
};

class HeadlessDefaults : public UserDefaults {
public:
    std::optional<std::string> data(const std::string& key) const override { return read(dataValues, key); }
    void setData(const std::string& key, const std::string& bytes) override { dataValues[key] = bytes; }
    std::optional<std::string> string(const std::string& key) const override { return read(strings, key); }
    void setString(const std::string& key, const std::string& text) override { strings[key] = text; }
    void remove(const std::string& key) override;

    std::map<std::string, std::string> dataValues;
    std::map<std::string, std::string> strings;

private:
    static std::optional<std::string> read(const std::map<std::string, std::string>& values, const std::string& key);
};

class HeadlessPasteboard : public Pasteboard {
public:
    bool setString(const std::string& text) override;

    bool refuses = false;
    std::optional<std::string> text;
};

/// A desktop that keeps what it is told. The public fields are set while no work runs.
class HeadlessWorkspace : public Workspace {
public:
    int registerApplication(const FileUrl& bundle) override;
    std::optional<std::string> setDefaultApplication(const FileUrl& bundle, const std::string& type) override;
    std::optional<FileUrl> applicationFor(const std::string& type) override;
    /// Moves them into the folder `trash`.
    Recycled recycle(const std::vector<FileUrl>& files) override;
    void reveal(const FileUrl& file) override { revealed.push_back(file); }

    std::vector<FileUrl> registered() const;
    std::atomic<int> registrationStatus = 0;
    std::optional<FileUrl> trash;
    bool keepsDefaults = false;       // the user declines
    bool keepsFiles = false;          // nothing goes to the Trash, and nobody says why
    std::optional<std::string> error; // of every change
    std::map<std::string, FileUrl> defaults;
    std::vector<FileUrl> revealed;

private:
    mutable std::mutex lock_;
    std::vector<FileUrl> registered_;
};

class HeadlessContentTypes : public ContentTypes {
public:
    std::optional<std::string> mimeType(const std::string& extension) const override;

    std::map<std::string, std::string> types;
};

/// A bundle over a folder, with the identifier and property list that the test gives it.
class HeadlessBundle : public Bundle {
public:
    explicit HeadlessBundle(FileUrl place) : folder(std::move(place)) {}

    FileUrl url() const override { return folder; }
    std::optional<std::string> identifier() const override { return identity; }
    std::optional<FileUrl> resources() const override { return folder.appending("Contents/Resources"); }
    FileUrl helper(const std::string& name) const override { return folder.appending("Contents/Helpers/" + name); }
    std::optional<JsonObject> propertyList() const override { return properties; }

    FileUrl folder;
    std::optional<std::string> identity = "app.quillmere.viewer";
    std::optional<JsonObject> properties;
};

/// Copies the source's bytes as the "picture"; a file that begins with "broken" cannot be read.
class HeadlessImageCodec : public ImageCodec {
public:
    ImageOutcome writeThumbnail(const FileUrl& source, const FileUrl& output, int maxSide) override;

    bool refuses = false;                    // to write
    std::function<void()> meanwhile = [] {}; // runs between reading and writing
    std::atomic<int> calls = 0;
    std::atomic<int> lastMaxSide = 0;
};

} // namespace quillmere::platform
