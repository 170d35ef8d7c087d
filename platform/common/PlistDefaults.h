#pragma once

#include "platform/Executors.h"
#include "platform/Services.h"
#include "platform/common/PropertyList.h"

#include <memory>

namespace quillmere::platform {

/// The user's defaults in one property list, which is read once. An unreadable file counts as empty, and is kept aside
/// when it is written anew; keys of others are kept, and so is what another instance of the program has changed
/// meanwhile. Changes are written on the given queue, atomically and durably, the newest state each time: flushing to
/// the disk would make a slider stutter on the main thread. The destructor writes what is still to be written.
class PlistDefaults final : public UserDefaults {
public:
    /// `writer` is used while this object lives, and must end its tasks or drop them.
    PlistDefaults(FileUrl file, Executor& writer);
    ~PlistDefaults() override;
    PlistDefaults(const PlistDefaults&) = delete;
    PlistDefaults& operator=(const PlistDefaults&) = delete;

    std::optional<std::string> data(const std::string& key) const override;
    void setData(const std::string& key, const std::string& bytes) override;
    std::optional<std::string> string(const std::string& key) const override;
    void setString(const std::string& key, const std::string& text) override;
    void remove(const std::string& key) override;

    /// Writes what is still to be written, and waits for it.
    void synchronize();

private:
    class Store;
    void set(const std::string& key, plist_t value);
    void changed(const std::string& key, PropertyList value);

    PropertyList values_;
    Executor& writer_;
    std::shared_ptr<Store> store_;
};

} // namespace quillmere::platform
