#include "platform/common/PlistDefaults.h"

#include "base/FileDescriptor.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "platform/common/AtomicFile.h"

#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <mutex>
#include <sys/file.h>
#include <utility>

namespace quillmere::platform {

/// What has changed since the last write, by key; no value for a key that goes. One writer at a time, here and among
/// the programs that share the file: each writes its own changes over what the file holds by then.
class PlistDefaults::Store {
public:
    explicit Store(FileUrl file) : file_(std::move(file)) {}

    /// Whether a write has to be submitted; false when one is waiting already.
    bool put(const std::string& key, PropertyList value) {
        const std::lock_guard lock(pendingMutex_);
        const bool isFirst = pending_.empty();
        pending_[key] = std::move(value);
        return isFirst;
    }

    void write() noexcept {
        const std::lock_guard writing(writingMutex_);
        std::map<std::string, PropertyList> changes;
        {
            const std::lock_guard lock(pendingMutex_);
            changes = std::exchange(pending_, {});
        }
        try {
            if (!changes.empty())
                apply(changes);
        } catch (const std::exception&) {
            // Defaults that cannot be saved hold for this run.
        }
    }

private:
    void apply(std::map<std::string, PropertyList>& changes) {
        const FileDescriptor others = lockAgainstOthers();
        PropertyList values = readPropertyList(file_);
        if (!values) {
            keepDamagedAside();
            values.reset(plist_new_dict());
        }
        for (auto& [key, value] : changes) {
            if (value)
                plist_dict_set_item(values.get(), key.c_str(), value.release());
            else if (plist_dict_get_item(values.get(), key.c_str()))
                plist_dict_remove_item(values.get(), key.c_str());
        }
        // The binary format takes any text; in XML a control character would make the whole file unreadable.
        char* bytes = nullptr;
        uint32_t length = 0;
        plist_to_bin(values.get(), &bytes, &length);
        const std::unique_ptr<char, decltype(&plist_to_bin_free)> owner(bytes, plist_to_bin_free);
        if (bytes)
            replaceFile(file_, {bytes, length});
    }

    /// Held until the descriptor closes; none where the folder cannot be written, or knows no locks.
    FileDescriptor lockAgainstOthers() const {
        std::error_code ignored;
        std::filesystem::create_directories(file_.parent().filesystemPath(), ignored);
        FileDescriptor lock(::open((file_.path() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (lock.get() >= 0)
            ::flock(lock.get(), LOCK_EX);
        return lock;
    }

    void keepDamagedAside() const {
        std::error_code ignored;
        if (std::filesystem::file_size(file_.filesystemPath(), ignored) == 0 || ignored)
            return; // nothing there, or nothing in it
        std::string aside = file_.path() + ".damaged";
        if (std::filesystem::exists(aside, ignored))
            aside += "-" + newUuid();
        std::filesystem::rename(file_.filesystemPath(), aside, ignored);
    }

    const FileUrl file_;
    std::mutex writingMutex_;
    std::mutex pendingMutex_;
    std::map<std::string, PropertyList> pending_;
};

PlistDefaults::PlistDefaults(FileUrl file, Executor& writer)
    : values_(readPropertyList(file)), writer_(writer), store_(std::make_shared<Store>(std::move(file))) {
    if (!values_)
        values_.reset(plist_new_dict());
}

PlistDefaults::~PlistDefaults() {
    synchronize();
}

std::optional<std::string> PlistDefaults::data(const std::string& key) const {
    return dataValue(plist_dict_get_item(values_.get(), key.c_str()));
}

std::optional<std::string> PlistDefaults::string(const std::string& key) const {
    return stringValue(plist_dict_get_item(values_.get(), key.c_str()));
}

void PlistDefaults::setData(const std::string& key, const std::string& bytes) {
    if (data(key) != bytes)
        set(key, plist_new_data(bytes.data(), bytes.size()));
}

void PlistDefaults::setString(const std::string& key, const std::string& text) {
    const std::string valid = displayText(text);
    if (string(key) != valid)
        set(key, plist_new_string(valid.c_str()));
}

void PlistDefaults::remove(const std::string& key) {
    if (!plist_dict_get_item(values_.get(), key.c_str()))
        return;
    plist_dict_remove_item(values_.get(), key.c_str());
    changed(key, nullptr);
}

void PlistDefaults::set(const std::string& key, plist_t value) {
    plist_dict_set_item(values_.get(), key.c_str(), value);
    changed(key, PropertyList(plist_copy(value)));
}

void PlistDefaults::changed(const std::string& key, PropertyList value) {
    if (store_->put(key, std::move(value)))
        writer_.submit([store = store_] { store->write(); });
}

void PlistDefaults::synchronize() {
    store_->write();
}

} // namespace quillmere::platform
