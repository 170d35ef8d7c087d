// Stands in for a converter. What it does is told by its first argument after "do:", or else by the contents of its
// input file: words separated by blanks or NULs, obeyed in order. Its arguments are what it writes, one a line.

#include "tests/platform/common/WholeFiles.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Job {
    std::vector<std::string> arguments;
    std::string input;
    std::string output;
};

/// As LibreOffice reads the folder for its results.
std::string decoded(const std::string& path) {
    std::string text;
    for (size_t i = 0; i < path.size(); ++i) {
        const std::string digits = path[i] == '%' ? path.substr(i + 1, 2) : "";
        if (digits.size() == 2 && digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos) {
            text += static_cast<char>(std::stoi(digits, nullptr, 16));
            i += 2;
        } else {
            text += path[i];
        }
    }
    return text;
}

Job jobOf(int count, char** values) {
    Job job{{values + 1, values + count}, {}, {}};
    for (size_t i = 0; i + 1 < job.arguments.size(); ++i) {
        if (job.arguments[i] == "-i") {
            job.input = job.arguments[i + 1];
            job.output = job.arguments.back();
        } else if (job.arguments[i] == "--outdir") {
            job.input = job.arguments.back();
            const std::string name = job.input.substr(job.input.rfind('/') + 1);
            job.output = decoded(job.arguments[i + 1]) + "/" + name.substr(0, name.rfind('.')) + ".pdf";
        }
    }
    return job;
}

bool connects(const std::string& port) {
    const int client = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void sleepForever() {
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

/// Fills the output until the system refuses; whether it did.
bool fill(const std::string& output) {
    ::signal(SIGXFSZ, SIG_IGN);
    std::ofstream file(output, std::ios::binary);
    const std::string block(1 << 20, 'x');
    for (int i = 0; i < 4096; ++i)
        if (!file.write(block.data(), static_cast<std::streamsize>(block.size())).flush())
            return true;
    return false;
}

/// Makes folders and files below the output until it is killed.
void litter(const std::string& output) {
    for (int i = 0;; ++i) {
        const std::string folder = output + "/" + std::to_string(i);
        std::filesystem::create_directories(folder);
        for (const char* name : {"/a", "/b", "/c"})
            std::ofstream(folder + name) << "litter";
        if (i > 100)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

int obey(const std::string& word, const Job& job) {
    const std::string value = word.substr(word.find('=') + 1);
    if (word == "write" || word == "cut") {
        std::string text;
        for (const auto& argument : job.arguments)
            text += argument + '\n';
        std::string file =
            job.output.ends_with(".pdf") ? quillmere::tests::pdfAround(text) : quillmere::tests::mediaAround(text);
        if (word == "cut")
            file.resize(file.size() - 6);
        std::ofstream(job.output, std::ios::binary) << file;
    } else if (word == "empty") {
        std::ofstream(job.output, std::ios::binary).flush();
    } else if (word == "folder") {
        std::filesystem::create_directory(job.output);
    } else if (word.starts_with("link=")) {
        std::filesystem::create_symlink(value, job.output);
    } else if (word == "sleep") {
        sleepForever();
    } else if (word == "ignore-term") {
        ::signal(SIGTERM, SIG_IGN);
    } else if (word == "fork") {
        // The second process has the same command line, by which the test looks for it.
        if (::fork() == 0)
            sleepForever();
    } else if (word == "litter") {
        litter(job.output);
    } else if (word == "fill") {
        return fill(job.output) ? 3 : 0;
    } else if (word.starts_with("exit=")) {
        std::exit(std::stoi(value));
    } else if (word.starts_with("signal=")) {
        ::raise(std::stoi(value));
    } else if (word.starts_with("connect=")) {
        return connects(value) ? 0 : 4;
    } else if (word.starts_with("reads=")) {
        return ::open(value.c_str(), O_RDONLY | O_CLOEXEC) >= 0 ? 0 : 5;
    } else if (word.starts_with("creates=")) {
        return std::ofstream(value) ? 0 : 6;
    } else if (word == "namespace") {
        return ::unshare(CLONE_NEWUSER) == 0 ? 0 : 10;
    } else if (word.starts_with("allocates=")) {
        const size_t bytes = std::stoull(value);
        auto* memory = static_cast<volatile char*>(std::malloc(bytes));
        if (!memory)
            return 7;
        memory[bytes - 1] = 1;
    } else if (word == "print") {
        for (const auto& argument : job.arguments)
            std::cout << argument << '\n';
        for (char** variable = ::environ; *variable; ++variable)
            std::cout << *variable << '\n';
    } else if (word == "copy") {
        std::cout << std::cin.rdbuf();
    } else if (word.starts_with("report=")) {
        const std::string text = "here\n";
        return ::write(std::stoi(value), text.data(), text.size()) > 0 ? 0 : 8;
    } else if (word == "descriptors") {
        for (int descriptor = 0; descriptor < 1024; ++descriptor)
            if (::fcntl(descriptor, F_GETFD) != -1)
                std::cout << descriptor << '\n';
    } else {
        return 9;
    }
    return 0;
}

} // namespace

int main(int count, char** values) {
    const Job job = jobOf(count, values);
    const bool isTold = count > 1 && std::string_view(values[1]).starts_with("do:");
    std::string script = isTold ? std::string(values[1] + 3) : contentsOf(job.input);
    std::string word;
    for (const char c : script + " ") {
        if (c != ' ' && c != '\n' && c != '\0') {
            word += c;
            continue;
        }
        if (!word.empty())
            if (const int failure = obey(word, job); failure != 0)
                return failure;
        word.clear();
    }
    std::cout.flush();
    return 0;
}
