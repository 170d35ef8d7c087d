// Whatever an archive holds: it is browsed within the rules or refused with a sentence, and every listing can be
// written for the page. The reader runs in this process, where the fuzzer sees it.

#include "base/Errors.h"
#include "base/Json.h"
#include "containers/ContainerBrowser.h"
#include "fuzz/Require.h"
#include "helpers/archive-reader/LibarchiveReader.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace quillmere;
using fuzz::require;
namespace fs = std::filesystem;

namespace {

/// A folder for this run, removed at its end.
class WorkFolder {
public:
    WorkFolder() : path_((fs::temp_directory_path() / "quillmere-fuzz-XXXXXX").native()) {
        require(mkdtemp(path_.data()) != nullptr);
        // A filter program must not be found.
        setenv("PATH", "/nonexistent", 1);
    }
    ~WorkFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    FileUrl file(const char* name) const { return FileUrl(path_).appending(name); }

private:
    std::string path_;
};

/// Opens what the listing shows, a few of each level.
void walk(ContainerBrowser& browser, const JsonObject& listing, const CancellationTest& cancelled, int depth) {
    require(compactJson(listing).has_value());
    int opened = 0;
    for (const auto& entry : listing.at("entries").as_array()) {
        if (++opened > 4 || depth > 3)
            return;
        const auto& record = entry.as_object();
        const bool isBlocked = record.contains("blockedReason");
        try {
            const auto result = browser.open(*stringField(listing, "token"), *stringField(record, "id"), cancelled);
            require(!isBlocked);
            if (const auto* inner = std::get_if<JsonObject>(&result))
                walk(browser, *inner, cancelled, depth + 1);
            else
                require(fs::file_size(std::get<OpenedFile>(result).file.filesystemPath()) <= 268'435'456);
        } catch (const ContainerError& error) {
            require(!userMessage(error).empty());
        } catch (const CancellationError&) {
            return;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const WorkFolder work;
    // An odd size reads as a single compressed file too.
    const FileUrl archive = work.file(size % 2 == 0 ? "a.zip" : "a.gz");
    std::ofstream(archive.filesystemPath(), std::ios::binary) << fuzz::textOf(data, size);
    // Long work is no finding here: inside the reader program it is stopped.
    const auto started = steadyNow();
    const CancellationTest cancelled = [started] { return steadyNow() - started > std::chrono::seconds(2); };
    ContainerBrowser browser(work.file("cache"), {.readers = LibarchiveReader::factory()});
    try {
        const auto root = browser.browse(archive, std::nullopt, std::nullopt, cancelled);
        walk(browser, root, cancelled, 0);
        browser.close(*stringField(root, "token"));
    } catch (const ContainerError& error) {
        require(!userMessage(error).empty());
    } catch (const CancellationError&) {
        return 0;
    }
    return 0;
}
