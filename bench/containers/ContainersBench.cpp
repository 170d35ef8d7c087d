// Ratios of browsing against the bare cost of the same work, all measured in one run:
//     bench_containers [ROUNDS [ARCHIVE...]]
// Archives (a.zip, a.tar, a.tgz, a.txz, a.7z, a.iso, a.cpio; all unless some are named) and a folder of 10,000 entries
// are made in a temporary folder.

#include "base/Json.h"
#include "containers/ConfinedArchiveReader.h"
#include "containers/ContainerBrowser.h"
#include "helpers/archive-reader/LibarchiveReader.h"
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

/// A piece of work that tells how long its timed part took, in milliseconds.
using Work = std::function<double()>;

double timed(const std::function<void()>& work) {
    const auto start = steadyNow();
    work();
    return Milliseconds(steadyNow() - start).count();
}

Work whole(std::function<void()> work) {
    return [work = std::move(work)] { return timed(work); };
}

/// Medians of pieces of work that take turns, so that a busy moment of the machine meets all of them.
std::vector<double> medians(int rounds, const std::vector<Work>& works) {
    std::vector<std::vector<double>> times(works.size());
    for (int round = 0; round < rounds; ++round)
        for (size_t i = 0; i < works.size(); ++i)
            times[i].push_back(works[i]());
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

using Command = std::vector<std::string>;

void run(const Command& command, const FileUrl& input, const FileUrl& output) {
    const FileDescriptor in(::open(input.path().c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor out(::open(output.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    platform::ProcessSpec spec{.executable = FileUrl("/usr/bin/" + command.front())};
    spec.arguments.assign(command.begin() + 1, command.end());
    spec.descriptors = {{.ours = in.get(), .theirs = 0}, {.ours = out.get(), .theirs = 1}};
    if (!platform::ChildProcess(spec).wait().isSuccess())
        fail(command.front());
}

/// How the format's own tool lists an archive and takes one entry out.
struct NativeTool {
    Command list;
    Command extract;
};

NativeTool nativeTool(const std::string& archive, const std::string& entry) {
    if (archive.ends_with(".zip"))
        return {{"unzip", "-l", archive}, {"unzip", "-p", archive, entry}};
    if (archive.ends_with(".cpio"))
        return {{"cpio", "-tv", "--quiet"}, {"cpio", "-i", "--quiet", "--to-stdout", entry}};
    if (archive.ends_with(".7z") || archive.ends_with(".iso"))
        return {{"7zz", "l", archive}, {"7zz", "e", "-so", archive, entry}};
    return {{"tar", "-tvf", archive}, {"tar", "-xOf", archive, entry}};
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
            ContainerBrowser::Options{.readers = ConfinedArchiveReader::factory(FileUrl(ARCHIVE_READER))});
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
        std::printf("%-8s %9s %8s %8s %8s %8s | %9s %8s %8s\n", "", "scan ms", "/ loop", "/ lib", "/ bsdtar",
                    "/ native", "last ms", "/ bsdtar", "/ native");
        for (const auto& [name, format, filter] : kinds)
            if (wanted.empty() || std::ranges::find(wanted, name) != wanted.end())
                archive(folder_.appending(name), format, filter);
    }

    void folders() const {
        const FileUrl dir = folder_.appending("files");
        fs::create_directory(dir.filesystemPath());
        for (int i = 0; i < entryCount; ++i)
            std::ofstream(dir.appending("file " + std::to_string(i) + ".txt").filesystemPath());
        const auto listAll = [&] {
            if (!compactJson(browse(dir)))
                fail("listing");
        };
        const auto times = medians(std::max(rounds_, 9), {whole(listAll), whole([&] { bareFolder(dir); })});
        std::printf("folder: listing, order and JSON %.1f ms, readdir and statx %.1f ms, ratio %.2f\n", times[0],
                    times[1], times[0] / times[1]);
    }

    void memory() const {
        const FileUrl file = folder_.appending("memory.zip");
        writeArchive(file, "zip", nullptr);
        const auto never = [] { return false; };
        ContainerBrowser browser(folder_.appending("cache"),
                                 {.readers = ConfinedArchiveReader::factory(FileUrl(ARCHIVE_READER))});
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
        const std::string last = entryName(entryCount - 1);
        const NativeTool native = nativeTool(file.path(), last);
        const auto tool = [&](Command command) {
            return whole([&file, &output, command = std::move(command)] { run(command, file, output); });
        };
        const auto scans = medians(rounds_, {whole([&] { browse(file); }), whole([&] { bareLoop(file); }),
                                             whole([&] { inProcess(file); }), tool({"bsdtar", "-tvf", file.path()}),
                                             tool(native.list)});
        const auto extractions = medians(rounds_, {[&] { return extract(file, last); },
                                                   tool({"bsdtar", "-xOf", file.path(), last}), tool(native.extract)});
        std::printf("%-8s %9.1f %8.2f %8.2f %8.2f %8.2f | %9.1f %8.2f %8.2f\n", file.lastPathComponent().c_str(),
                    scans[0], scans[0] / scans[1], scans[0] / scans[2], scans[0] / scans[3], scans[0] / scans[4],
                    extractions[0], extractions[0] / extractions[1], extractions[0] / extractions[2]);
    }

    /// The time that opening the entry takes, from the click in the listing on.
    double extract(const FileUrl& file, const std::string& path) const {
        const auto never = [] { return false; };
        const auto root = browse(file);
        const auto token = *stringField(root, "token");
        const auto slash = path.find('/');
        const auto folder = std::get<JsonObject>(browser_->open(token, idOf(root, path.substr(0, slash)), never));
        const auto id = idOf(folder, path.substr(slash + 1));
        return timed([&] { browser_->open(token, id, never); });
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
