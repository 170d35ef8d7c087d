#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace quillmere {

/// A failure with one finished sentence for the user.
class FileFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A failure that the folder and archive browser found itself; `what()` is the sentence for the user.
class ContainerError : public std::runtime_error {
public:
    static constexpr const char* domain = "Quillmere.Container";
    static constexpr int code = 1;
    using std::runtime_error::runtime_error;
};

/// Work that was told to stop. It carries no sentence and is never shown.
class CancellationError : public std::exception {
public:
    const char* what() const noexcept override { return "cancelled"; }
};

/// The sentence that the user reads for any error: the error's own, or for a failure of the file system a plain one
/// that names the file. Empty for a cancellation.
std::string userMessage(const std::exception& error);

/// A failed system call on a file, to be thrown: `errno` value and the file's path (any bytes).
std::exception_ptr fileError(int errorNumber, const std::string& path);
[[noreturn]] void throwFileError(int errorNumber, const std::string& path);

} // namespace quillmere
