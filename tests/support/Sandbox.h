#pragma once

#include "base/FileUrl.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace quillmere {

/// A fixture with a folder of its own, gone when the test ends.
class Sandbox : public ::testing::Test {
protected:
    Sandbox() : root_(make()) {}
    ~Sandbox() override {
        std::error_code ignored;
        std::filesystem::remove_all(root_.filesystemPath(), ignored);
    }

    const FileUrl& root() const { return root_; }

    FileUrl folder(std::string_view relativePath) const {
        const FileUrl made = root_.appending(relativePath);
        std::filesystem::create_directories(made.filesystemPath());
        return made;
    }

    FileUrl write(std::string_view relativePath, std::string_view bytes = "content") const {
        const FileUrl file = root_.appending(relativePath);
        std::filesystem::create_directories(file.parent().filesystemPath());
        std::ofstream(file.filesystemPath(), std::ios::binary) << bytes;
        return file;
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

} // namespace quillmere
