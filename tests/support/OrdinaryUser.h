#pragma once

#include "base/FileUrl.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace quillmere::tests {

/// Root may read everything; for a while the test is somebody else, who owns this tree.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const FileUrl& tree) {
        if (::geteuid() != 0)
            return;
        chown(tree.path());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.filesystemPath()))
            chown(entry.path().native());
        EXPECT_EQ(::seteuid(nobody), 0);
        wasRoot_ = true;
    }
    ~OrdinaryUser() {
        if (wasRoot_) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

private:
    static constexpr uid_t nobody = 65'534;
    static void chown(const std::string& path) { EXPECT_EQ(::lchown(path.c_str(), nobody, nobody), 0); }
    bool wasRoot_ = false;
};

} // namespace quillmere::tests
