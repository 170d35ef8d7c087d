#include "helpers/archive-reader/LibarchiveReader.h"

#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cerrno>
#include <cstdio>
#include <langinfo.h>
#include <string_view>
#include <unistd.h>

namespace quillmere {

namespace {

/// libarchive translates names by the character type of the thread's locale; anything but UTF-8 loses names. Nothing
/// where the locale is right already.
locale_t localeForNames() {
    return std::string_view(nl_langinfo(CODESET)) == "UTF-8" ? locale_t{}
                                                             : newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
}

class Utf8Names {
public:
    explicit Utf8Names(locale_t locale) : previous_(locale ? uselocale(locale) : locale_t{}) {}
    ~Utf8Names() {
        if (previous_)
            uselocale(previous_);
    }
    Utf8Names(const Utf8Names&) = delete;
    Utf8Names& operator=(const Utf8Names&) = delete;

private:
    locale_t previous_;
};

} // namespace

/// The archive's bytes, from the descriptor that was checked. It keeps count of the place itself: an image of 10,000
/// small files takes 20,000 moves, each of which would be a system call.
struct LibarchiveReader::Source {
    int descriptor;
    int64_t size;
    int64_t place = 0;
    alignas(4096) std::array<char, limits::blockBytes> block;

    explicit Source(int file) : descriptor(file), size(std::max<int64_t>(::lseek(file, 0, SEEK_END), 0)) {}

    static la_ssize_t read(archive* handle, void* data, const void** buffer) {
        auto& source = *static_cast<Source*>(data);
        *buffer = source.block.data();
        for (;;) {
            const ssize_t count = ::pread(source.descriptor, source.block.data(), source.block.size(), source.place);
            if (count >= 0) {
                source.place += count;
                return count;
            }
            if (errno != EINTR) {
                archive_set_error(handle, errno, "Error reading the file");
                return -1;
            }
        }
    }

    static la_int64_t skip(archive*, void* data, la_int64_t request) {
        auto& source = *static_cast<Source*>(data);
        // A move past the end would go unnoticed; the rest is then read, which finds the end.
        if (request < 0 || request > source.size - source.place)
            return 0;
        source.place += request;
        return request;
    }

    static la_int64_t seek(archive* handle, void* data, la_int64_t offset, int whence) {
        auto& source = *static_cast<Source*>(data);
        const int64_t origin = whence == SEEK_CUR ? source.place : whence == SEEK_END ? source.size : 0;
        int64_t target = 0;
        if (__builtin_add_overflow(origin, offset, &target) || target < 0) {
            archive_set_error(handle, EINVAL, "Error seeking in the file");
            return ARCHIVE_FATAL;
        }
        return source.place = target;
    }
};

void LibarchiveReader::ArchiveCloser::operator()(archive* handle) const {
    archive_read_free(handle);
}

LibarchiveReader::LibarchiveReader(ArchiveRequest request)
    : request_(std::move(request)), locale_(localeForNames()), source_(std::make_unique<Source>(request_.file.get())),
      archive_(archive_read_new()) {
    if (!archive_) {
        if (locale_)
            freelocale(locale_);
        throw ContainerError(messages::readerNotCreated);
    }
    archive_read_support_filter_all(archive_.get());
    archive_read_support_format_all(archive_.get());
    if (request_.raw == RawFormat::accepted)
        archive_read_support_format_raw(archive_.get());
    archive_read_set_callback_data(archive_.get(), source_.get());
    archive_read_set_read_callback(archive_.get(), Source::read);
    archive_read_set_skip_callback(archive_.get(), Source::skip);
    archive_read_set_seek_callback(archive_.get(), Source::seek);
}

LibarchiveReader::~LibarchiveReader() {
    archive_.reset();
    if (locale_)
        freelocale(locale_);
}

ArchiveReaderFactory LibarchiveReader::factory() {
    return [](ArchiveRequest request) { return std::make_unique<LibarchiveReader>(std::move(request)); };
}

ArchiveReader::Outcome LibarchiveReader::step() {
    if (state_ == State::fresh)
        state_ = archive_read_open1(archive_.get()) == ARCHIVE_OK ? State::reading : State::broken;
    // Another call would replace the words for what broke it.
    if (state_ == State::broken)
        return Outcome::failed;
    const int result = archive_read_next_header(archive_.get(), &entry_);
    if (result == ARCHIVE_EOF)
        return Outcome::end;
    return result == ARCHIVE_OK && entry_ ? Outcome::done : Outcome::failed;
}

ArchiveReader::Outcome LibarchiveReader::passOver() {
    const int result = archive_read_data_skip(archive_.get());
    if (result == ARCHIVE_FATAL)
        state_ = State::broken;
    return result < 0 ? Outcome::failed : Outcome::done;
}

ArchiveReader::Outcome LibarchiveReader::next(EntryFacts& facts) {
    const Utf8Names names(locale_);
    for (int64_t passed = 1; passed < request_.only.value_or(1); ++passed) {
        request_.pulse();
        if (const auto outcome = step(); outcome != Outcome::done)
            return outcome;
        if (const auto outcome = passOver(); outcome != Outcome::done)
            return outcome;
    }
    if (const auto outcome = step(); outcome != Outcome::done)
        return outcome;

    const char* name = archive_entry_pathname_utf8(entry_);
    if (!name)
        name = archive_entry_pathname(entry_);
    const char* format = archive_format_name(archive_.get());
    if (!name)
        facts.name.reset();
    else if (facts.name)
        facts.name->assign(name); // into the room that is there already
    else
        facts.name = name;
    facts.format = format ? format : "";
    facts.type = archive_entry_filetype(entry_);
    facts.size = archive_entry_size_is_set(entry_) ? std::optional<int64_t>(archive_entry_size(entry_)) : std::nullopt;
    facts.modified = archive_entry_mtime(entry_);
    facts.encrypted = archive_entry_is_encrypted(entry_) > 0;
    facts.symbolicLink = archive_entry_symlink(entry_) != nullptr;
    facts.hardLink = archive_entry_hardlink(entry_) != nullptr;
    return Outcome::done;
}

ArchiveReader::Outcome LibarchiveReader::skip() {
    const Utf8Names names(locale_);
    return passOver();
}

std::optional<size_t> LibarchiveReader::read(std::span<char> buffer) {
    const la_ssize_t count = archive_read_data(archive_.get(), buffer.data(), buffer.size());
    if (count < 0)
        return std::nullopt;
    return static_cast<size_t>(count);
}

std::optional<std::string> LibarchiveReader::errorText() const {
    const char* text = archive_error_string(archive_.get());
    return text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace quillmere
