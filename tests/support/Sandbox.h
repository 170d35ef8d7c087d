#pragma once

#include "base/FileUrl.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::tests {

/// A folder of the test's own, gone when the test ends.
class Sandbox {
public:
    Sandbox() : root_(make()) {}
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;
    ~Sandbox() {
        std::error_code ignored;
        std::filesystem::remove_all(root_.filesystemPath(), ignored);
    }

    const FileUrl& root() const { return root_; }
    FileUrl at(std::string_view relativePath) const { return root_.appending(relativePath); }

    FileUrl folder(std::string_view relativePath) const {
        std::filesystem::create_directories(at(relativePath).filesystemPath());
        return at(relativePath);
    }

    FileUrl write(std::string_view relativePath, std::string_view bytes = "content") const {
        const FileUrl file = at(relativePath);
        std::filesystem::create_directories(file.parent().filesystemPath());
        std::ofstream(file.filesystemPath(), std::ios::binary) << bytes;
        return file;
    }

    FileUrl writeProgram(std::string_view relativePath, std::string_view script = "") const {
        const FileUrl file = write(relativePath, script);
        std::filesystem::permissions(file.filesystemPath(), std::filesystem::perms::owner_all);
        return file;
    }

    static std::string read(const FileUrl& file) {
        std::ifstream stream(file.filesystemPath(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// The names in a folder, sorted.
    std::vector<std::string> names(std::string_view relativePath = "") const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(at(relativePath).filesystemPath()))
            found.push_back(entry.path().filename().native());
        std::ranges::sort(found);
        return found;
    }

private:
    static FileUrl make() {
        std::string path = (std::filesystem::temp_directory_path() / "quillmere-test-XXXXXX").native();
        if (!::mkdtemp(path.data()))
            throw std::runtime_error("no folder for the test");
        return FileUrl(path).resolvingSymlinks();
    }

    const FileUrl root_;
};

} // namespace quillmere::tests
