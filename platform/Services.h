#pragma once

#include "base/FileUrl.h"
#include "base/Json.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere::platform {

/// The user's defaults: small values that outlive the process. Main thread only. Writes never fail visibly.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    virtual std::optional<std::string> data(const std::string& key) const = 0; // bytes
    virtual void setData(const std::string& key, const std::string& bytes) = 0;
    virtual std::optional<std::string> string(const std::string& key) const = 0;
    virtual void setString(const std::string& key, const std::string& text) = 0;
    virtual void remove(const std::string& key) = 0;
};

/// The general pasteboard. Main thread only.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    /// Replaces the contents by plain text; whether it was taken.
    virtual bool setString(const std::string& text) = 0;
};

/// What became of files that were to go to the Trash.
struct Recycled {
    std::set<FileUrl> moved{};          // those that lie in the Trash now
    std::optional<std::string> error{}; // for the user to read
};

/// Services of the desktop. Any thread, and they may block, unless they say otherwise.
class Workspace {
public:
    virtual ~Workspace() = default;
    /// Makes the bundle's document types known; 0, or the status of the failure.
    virtual int registerApplication(const FileUrl& bundle) = 0;
    /// Asks the desktop to open the MIME type by this bundle from now on; what it has to say against it, for the user
    /// to read.
    virtual std::optional<std::string> setDefaultApplication(const FileUrl& bundle, const std::string& type) = 0;
    /// The application that opens the type: a bundle, or the program of another application.
    virtual std::optional<FileUrl> applicationFor(const std::string& type) = 0;
    /// Moves the files to the Trash.
    virtual Recycled recycle(const std::vector<FileUrl>& files) = 0;
    /// Shows the file in the file manager. Main thread; does not block.
    virtual void reveal(const FileUrl& file) = 0;
};

/// The desktop's registry of file types. Any thread.
class ContentTypes {
public:
    virtual ~ContentTypes() = default;
    /// The preferred MIME type for a lower-case extension; none when the registry knows none.
    virtual std::optional<std::string> mimeType(const std::string& extension) const = 0;
};

/// The running bundle. Any thread.
class Bundle {
public:
    virtual ~Bundle() = default;
    virtual FileUrl url() const = 0;
    virtual std::optional<std::string> identifier() const = 0;
    virtual std::optional<FileUrl> resources() const = 0;
    /// A program of ours in the bundle's "Helpers" folder.
    virtual FileUrl helper(const std::string& name) const = 0;
    /// The bundle's property list as JSON values (dates and data left out); none when it cannot be read.
    virtual std::optional<JsonObject> propertyList() const = 0;
};

/// The user's folders; a folder that the system does not name is absent.
struct Directories {
    FileUrl home;
    std::optional<FileUrl> caches;
    std::optional<FileUrl> applicationSupport;
};

} // namespace quillmere::platform
