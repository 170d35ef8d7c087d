#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

namespace quillmere::tests {

/// How many living processes carry this text in their command line. A test looks for a word that only it uses.
inline int processesNaming(std::string_view text) {
    int count = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        if (entry.path().filename().native().find_first_not_of("0123456789") != std::string::npos)
            continue;
        std::ostringstream line; // a process that ends meanwhile reads as none
        line << std::ifstream(entry.path() / "cmdline", std::ios::binary).rdbuf();
        count += line.str().find(text) != std::string::npos ? 1 : 0;
    }
    return count;
}

/// Waits until the condition holds; whether it does within half a minute.
template <typename Condition>
bool eventually(Condition condition) {
    for (int i = 0; i < 3000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

} // namespace quillmere::tests
