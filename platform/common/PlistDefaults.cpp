#include "platform/common/PlistDefaults.h"

#include "base/Text.h"
#include "platform/common/AtomicFile.h"

#include <exception>
#include <mutex>
#include <utility>

namespace quillmere::platform {

/// The newest contents that are not on the disk yet. One writer at a time, so that an older state never wins.
class PlistDefaults::Store {
public:
    explicit Store(FileUrl file) : file_(std::move(file)) {}

    /// Whether a write has to be submitted; false when one is waiting already.
    bool put(std::string contents) {
        const std::lock_guard lock(pendingMutex_);
        return !std::exchange(pending_, std::move(contents)).has_value();
    }

    void write() noexcept {
        const std::lock_guard writing(writingMutex_);
        std::optional<std::string> contents;
        {
            const std::lock_guard lock(pendingMutex_);
            contents = std::exchange(pending_, std::nullopt);
        }
        try {
            if (contents)
                replaceFile(file_, *contents);
        } catch (const std::exception&) {
            // Defaults that cannot be saved hold for this run.
        }
    }

private:
    const FileUrl file_;
    std::mutex writingMutex_;
    std::mutex pendingMutex_;
    std::optional<std::string> pending_;
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
    changed();
}

void PlistDefaults::set(const std::string& key, plist_t value) {
    plist_dict_set_item(values_.get(), key.c_str(), value);
    changed();
}

void PlistDefaults::changed() {
    // The binary format takes any text; in XML a control character would make the whole file unreadable.
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(values_.get(), &bytes, &length);
    if (!bytes)
        return;
    const std::unique_ptr<char, decltype(&plist_to_bin_free)> owner(bytes, plist_to_bin_free);
    if (store_->put(std::string(bytes, length)))
        writer_.submit([store = store_] { store->write(); });
}

void PlistDefaults::synchronize() {
    store_->write();
}

} // namespace quillmere::platform
