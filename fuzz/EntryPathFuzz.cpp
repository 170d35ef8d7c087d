// Whatever an archive calls its entries: a path that is let through is clean, relative and stays so.

#include "base/Errors.h"
#include "containers/EntryPath.h"
#include "fuzz/Require.h"

#include <algorithm>
#include <cstdint>

using namespace quillmere;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    EntryFacts facts;
    facts.format = size % 2 == 0 ? "raw" : "ustar";
    facts.name = fuzz::textOf(data, size);
    std::string path;
    try {
        path = entryPath(facts, FileUrl("/archive.txt.gz"));
    } catch (const ContainerError&) {
        return 0;
    }
    require(path.size() <= size || path == "archive.txt");
    require(std::ranges::none_of(path, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\\'; }));
    require(path == safeArchivePath(path.empty() ? "." : path));
    int components = 0;
    for (std::string_view rest = path; !rest.empty(); rest = parentOfPath(rest)) {
        const auto last = lastOfPath(rest);
        require(!last.empty() && last != "." && last != "..");
        ++components;
    }
    require(components <= 64);
    return 0;
}
