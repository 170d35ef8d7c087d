#pragma once

#include "base/FileUrl.h"
#include "base/Uuid.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::tests {

/// A folder of the test's own, removed at its end.
class Sandbox {
public:
    Sandbox() : folder_(std::filesystem::temp_directory_path() / ("quillmere-test-" + newUuid())) {
        std::filesystem::create_directories(folder_.filesystemPath());
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;
    ~Sandbox() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_.filesystemPath(), ignored);
    }

    const FileUrl& url() const { return folder_; }
    FileUrl at(std::string_view name) const { return folder_.appending(name); }

    FileUrl write(std::string_view name, std::string_view contents) const {
        const FileUrl file = at(name);
        std::filesystem::create_directories(file.parent().filesystemPath());
        std::ofstream(file.filesystemPath(), std::ios::binary) << contents;
        return file;
    }

    static std::string read(const FileUrl& file) {
        std::ifstream stream(file.filesystemPath(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Names in a folder of the sandbox, sorted.
    std::vector<std::string> names(std::string_view folder = "") const;

private:
    FileUrl folder_;
};

inline std::vector<std::string> Sandbox::names(std::string_view folder) const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(at(folder).filesystemPath()))
        found.push_back(entry.path().filename().native());
    std::ranges::sort(found);
    return found;
}

} // namespace quillmere::tests
