// Ratios of browsing against the bare cost of the same work, all measured in one run:
//     bench_containers [ROUNDS [ARCHIVE...]]
// Archives (a.zip, a.tar, a.tgz, a.txz, a.7z, a.iso, a.cpio; all unless some are named) and a folder of 10,000 entries
// are made in a temporary folder.

#include "base/Json.h"
#include "containers/ContainerBrowser.h"
#include "containers/HelperArchiveReader.h"
#include "containers/LibarchiveReader.h"
#include "platform/common/ChildProcess.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace quillmere;
namespace fs = std::filesystem;

/// With their folders and an image's root just the 10,000 that can be browsed.
constexpr int entryCount = 9'979;
constexpr size_t entryBytes = 2'000;

using Milliseconds = std::chrono::duration<double, std::milli>;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "bench_containers: %s\n", what.c_str());
    std::exit(1);
}

/// Medians of pieces of work that take turns, so that a busy moment of the machine meets all of them.
std::vector<double> medians(int rounds, const std::vector<std::function<void()>>& works) {
    std::vector<std::vector<double>> times(works.size());
    for (int round = 0; round < rounds; ++round)
        for (size_t i = 0; i < works.size(); ++i) {
            const auto start = steadyNow();
            works[i]();
            times[i].push_back(Milliseconds(steadyNow() - start).count());
        }
    std::vector<double> result;
    for (auto& series : times) {
        std::ranges::sort(series);
        result.push_back(series[series.size() / 2]);
    }
    return result;
}

std::string entryName(int number) {
    return "folder" + std::to_string(number / 500) + "/file" + std::to_string(number) + ".txt";
}

void writeArchive(const FileUrl& file, const char* format, const char* filter) {
    const std::unique_ptr<archive, int (*)(archive*)> writer(archive_write_new(), archive_write_free);
    if (archive_write_set_format_by_name(writer.get(), format) != ARCHIVE_OK)
        fail(format);
    if (filter && archive_write_add_filter_by_name(writer.get(), filter) != ARCHIVE_OK)
        fail(filter);
    if (archive_write_open_filename(writer.get(), file.path().c_str()) != ARCHIVE_OK)
        fail(file.path());
    std::mt19937 random(42);
    std::string content(entryBytes, ' ');
    for (int i = 0; i < entryCount; ++i) {
        for (char& c : content)
            c = static_cast<char>('a' + random() % 16);
        const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
        archive_entry_set_pathname(entry.get(), entryName(i).c_str());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_mtime(entry.get(), 1'700'000'000, 0);
        archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
        if (archive_write_header(writer.get(), entry.get()) != ARCHIVE_OK ||
            archive_write_data(writer.get(), content.data(), content.size()) < 0)
            fail(archive_error_string(writer.get()));
    }
    if (archive_write_close(writer.get()) != ARCHIVE_OK)
        fail(archive_error_string(writer.get()));
}

/// What reading every header costs with nothing around it.
void bareLoop(const FileUrl& file) {
    const std::unique_ptr<archive, int (*)(archive*)> reader(archive_read_new(), archive_read_free);
    archive_read_support_filter_all(reader.get());
    archive_read_support_format_all(reader.get());
    if (archive_read_open_filename(reader.get(), file.path().c_str(), 65'536) != ARCHIVE_OK)
        fail(archive_error_string(reader.get()));
    archive_entry* entry = nullptr;
    int count = 0;
    while (archive_read_next_header(reader.get(), &entry) == ARCHIVE_OK) {
        count += archive_entry_pathname_utf8(entry) ? 1 : 0;
        archive_read_data_skip(reader.get());
    }
    if (count < entryCount)
        fail("bare loop");
}

void run(const char* program, std::vector<std::string> arguments, const FileUrl& output) {
    const FileDescriptor file(::open(output.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    platform::ProcessSpec spec{.executable = FileUrl(program)};
    spec.arguments = std::move(arguments);
    spec.descriptors = {{.ours = file.get(), .theirs = 1}};
    if (!platform::ChildProcess(spec).wait().isSuccess())
        fail(program);
}

std::string idOf(const JsonObject& listing, std::string_view name) {
    for (const auto& entry : listing.at("entries").as_array())
        if (stringField(entry.as_object(), "name") == name)
            return *stringField(entry.as_object(), "id");
    fail("no entry " + std::string(name));
}

class Bench {
public:
    explicit Bench(int rounds) : rounds_(rounds), folder_("/") {
        std::string pattern = (fs::temp_directory_path() / "quillmere-bench-XXXXXX").native();
        if (!mkdtemp(pattern.data()))
            fail("no temporary folder");
        folder_ = FileUrl(pattern);
        browser_ = std::make_unique<ContainerBrowser>(
            folder_.appending("cache"),
            ContainerBrowser::Options{.readers = HelperArchiveReader::factory({.program = FileUrl(ARCHIVE_HELPER)})});
    }
    ~Bench() {
        browser_.reset();
        std::error_code error;
        fs::remove_all(folder_.filesystemPath(), error);
    }

    void archives(const std::vector<std::string>& wanted) const {
        const struct {
            const char* name;
            const char* format;
            const char* filter;
        } kinds[] = {{"a.zip", "zip", nullptr},  {"a.tar", "pax", nullptr}, {"a.tgz", "pax", "gzip"},
                     {"a.txz", "pax", "xz"},     {"a.7z", "7zip", nullptr}, {"a.iso", "iso9660", nullptr},
                     {"a.cpio", "cpio", nullptr}};
        std::printf("%-8s %9s %9s %9s %9s | %9s %9s %9s\n", "", "scan ms", "/ loop", "/ lib", "/ bsdtar", "last ms",
                    "/ bsdtar", "");
        for (const auto& [name, format, filter] : kinds)
            if (wanted.empty() || std::ranges::find(wanted, name) != wanted.end())
                archive(folder_.appending(name), format, filter);
    }

    void folders() const {
        const FileUrl dir = folder_.appending("files");
        fs::create_directory(dir.filesystemPath());
        for (int i = 0; i < entryCount; ++i)
            std::ofstream(dir.appending("file " + std::to_string(i) + ".txt").filesystemPath());
        const auto times = medians(std::max(rounds_, 9), {[&] {
                                                              const auto listing = browse(dir);
                                                              if (!compactJson(listing))
                                                                  fail("listing");
                                                          },
                                                          [&] { bareFolder(dir); }});
        std::printf("folder: listing, order and JSON %.1f ms, readdir and statx %.1f ms, ratio %.2f\n", times[0],
                    times[1], times[0] / times[1]);
    }

    void memory() const {
        const FileUrl file = folder_.appending("memory.zip");
        writeArchive(file, "zip", nullptr);
        const auto never = [] { return false; };
        ContainerBrowser browser(folder_.appending("cache"),
                                 {.readers = HelperArchiveReader::factory({.program = FileUrl(ARCHIVE_HELPER)})});
        const auto before = mallinfo2().uordblks;
        const auto token = *stringField(browser.browse(file, std::nullopt, std::nullopt, never), "token");
        std::printf("a session with %d nodes: %.1f MB\n", entryCount,
                    static_cast<double>(mallinfo2().uordblks - before) / 1'000'000);
        browser.close(token);
    }

private:
    JsonObject browse(const FileUrl& url) const {
        return browser_->browse(url, std::nullopt, std::nullopt, [] { return false; });
    }

    /// The browser's scan without the process in between.
    void inProcess(const FileUrl& file) const {
        ContainerBrowser browser(folder_.appending("cache"), {.readers = LibarchiveReader::factory()});
        browser.browse(file, std::nullopt, std::nullopt, [] { return false; });
    }

    void archive(const FileUrl& file, const char* format, const char* filter) const {
        writeArchive(file, format, filter);
        const FileUrl output = folder_.appending("output");
        const auto scans = medians(rounds_, {[&] { browse(file); }, [&] { bareLoop(file); }, [&] { inProcess(file); },
                                             [&] { run("/usr/bin/bsdtar", {"-tvf", file.path()}, output); }});
        const std::string last = entryName(entryCount - 1);
        const auto extractions = medians(rounds_, {[&] { extract(file, last); },
                                                   [&] { run("/usr/bin/bsdtar", {"-xOf", file.path(), last}, output); },
                                                   [&] { browse(file); }});
        // An extraction needs a session, which is opened for it and not part of its cost.
        const double lastMs = extractions[0] - extractions[2];
        std::printf("%-8s %9.1f %9.2f %9.2f %9.2f | %9.1f %9.2f\n", file.lastPathComponent().c_str(), scans[0],
                    scans[0] / scans[1], scans[0] / scans[2], scans[0] / scans[3], lastMs, lastMs / extractions[1]);
    }

    void extract(const FileUrl& file, const std::string& path) const {
        const auto never = [] { return false; };
        const auto root = browse(file);
        const auto token = *stringField(root, "token");
        const auto slash = path.find('/');
        const auto folder = std::get<JsonObject>(browser_->open(token, idOf(root, path.substr(0, slash)), never));
        browser_->open(token, idOf(folder, path.substr(slash + 1)), never);
    }

    static void bareFolder(const FileUrl& folder) {
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.path().c_str()), ::closedir);
        int count = 0;
        while (const dirent* entry = ::readdir(entries.get())) {
            struct statx status{};
            constexpr unsigned wanted = STATX_TYPE | STATX_SIZE | STATX_MTIME;
            count += ::statx(::dirfd(entries.get()), entry->d_name, AT_SYMLINK_NOFOLLOW, wanted, &status) == 0 ? 1 : 0;
        }
        if (count < entryCount)
            fail("bare folder");
    }

    int rounds_;
    FileUrl folder_;
    std::unique_ptr<ContainerBrowser> browser_;
};

} // namespace

int main(int count, char** arguments) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        const Bench bench(count > 1 ? std::max(std::atoi(arguments[1]), 1) : 5);
        bench.archives({arguments + std::min(count, 2), arguments + count});
        bench.folders();
        bench.memory();
    } catch (const std::exception& error) {
        fail(error.what());
    }
}
