#include "tests/containers/Fixtures.h"

#include "base/Errors.h"
#include "containers/ConfinedArchiveReader.h"

#include <archive.h>
#include <archive_entry.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace quillmere::testing {

namespace {

namespace fs = std::filesystem;

template <typename Number>
std::string little(Number number) {
    std::string bytes;
    for (size_t at = 0; at < sizeof number; ++at)
        bytes += static_cast<char>(static_cast<uint64_t>(number) >> (8 * at) & 0xFFU);
    return bytes;
}

template <typename Number>
std::string big(Number number) {
    std::string bytes = little(number);
    return {bytes.rbegin(), bytes.rend()};
}

uint32_t crc32(std::string_view bytes) {
    uint32_t crc = ~0U;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1U ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

uint16_t crc16(std::string_view bytes) {
    uint16_t crc = 0;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<uint16_t>(crc >> 1U ^ ((crc & 1U) != 0 ? 0xA001U : 0U));
    }
    return crc;
}

void place(std::string& block, size_t at, const std::string& bytes) {
    block.replace(at, bytes.size(), bytes);
}

std::string octal(uint64_t number, int digits) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*llo", digits, static_cast<unsigned long long>(number));
    return buffer;
}

std::string tarHeader(const TarMember& member) {
    std::string block(512, '\0');
    place(block, 0, member.name.substr(0, 100));
    place(block, 100, octal(member.type == '5' ? 0755 : 0644, 7));
    place(block, 108, octal(0, 7));
    place(block, 116, octal(0, 7));
    place(block, 124, octal(member.declared.value_or(member.data.size()), 11));
    place(block, 136, octal(1'700'000'000, 11));
    block[156] = member.type;
    place(block, 157, member.link.substr(0, 100));
    place(block, 257,
          std::string("ustar\0"
                      "00",
                      8));
    place(block, 148, "        ");
    unsigned sum = 0;
    for (const char c : block)
        sum += static_cast<unsigned char>(c);
    place(block, 148, octal(sum, 6) + std::string("\0 ", 2));
    return block;
}

} // namespace

std::string tarOf(const std::vector<TarMember>& members) {
    std::string bytes;
    for (const auto& member : members) {
        bytes += tarHeader(member) + member.data;
        bytes.resize((bytes.size() + 511) / 512 * 512);
    }
    return bytes + std::string(1024, '\0');
}

std::string zipOf(const std::vector<ZipMember>& members) {
    constexpr uint32_t unixFile = 0100644U << 16U;
    std::string bytes;
    std::string directory;
    for (const auto& member : members) {
        const std::string common = little(member.flags) + little(member.method) + little(uint32_t{0x5A6E0000}) +
                                   little(crc32(member.data)) + little(static_cast<uint32_t>(member.data.size())) +
                                   little(member.declared.value_or(static_cast<uint32_t>(member.data.size()))) +
                                   little(static_cast<uint16_t>(member.name.size())) + little(uint16_t{0});
        directory += "PK\x01\x02" + little(uint16_t{0x0314}) + little(uint16_t{20}) + common + little(uint16_t{0}) +
                     little(uint16_t{0}) + little(uint16_t{0}) + little(unixFile) +
                     little(member.offset.value_or(static_cast<uint32_t>(bytes.size()))) + member.name;
        if (!member.offset)
            bytes += "PK\x03\x04" + little(uint16_t{20}) + common + member.name + member.data;
    }
    const auto count = little(static_cast<uint16_t>(members.size()));
    const auto start = static_cast<uint32_t>(bytes.size());
    return bytes + directory + "PK\x05\x06" + little(uint32_t{0}) + count + count +
           little(static_cast<uint32_t>(directory.size())) + little(start) + little(uint16_t{0});
}

std::string archiveOf(const char* format, const char* filter, const std::vector<TarMember>& members) {
    std::string bytes;
    const std::unique_ptr<archive, int (*)(archive*)> writer(archive_write_new(), archive_write_free);
    EXPECT_EQ(archive_write_set_format_by_name(writer.get(), format), ARCHIVE_OK);
    if (std::string_view(filter) != "none") {
        EXPECT_EQ(archive_write_add_filter_by_name(writer.get(), filter), ARCHIVE_OK);
    }
    // The slowest format quick rather than small; and nothing behind the end, so that packed pieces can be joined.
    archive_write_set_format_option(writer.get(), "7zip", "compression-level", "1");
    archive_write_set_bytes_in_last_block(writer.get(), 1);
    const auto append = [](archive*, void* data, const void* buffer, size_t length) {
        static_cast<std::string*>(data)->append(static_cast<const char*>(buffer), length);
        return static_cast<la_ssize_t>(length);
    };
    EXPECT_EQ(archive_write_open(writer.get(), &bytes, nullptr, append, nullptr), ARCHIVE_OK);
    for (const auto& member : members) {
        const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
        archive_entry_set_pathname(entry.get(), member.name.c_str());
        archive_entry_set_filetype(entry.get(), member.type == '5' ? AE_IFDIR : AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_mtime(entry.get(), 1'700'000'000, 0);
        archive_entry_set_size(entry.get(), static_cast<la_int64_t>(member.data.size()));
        EXPECT_EQ(archive_write_header(writer.get(), entry.get()), ARCHIVE_OK) << archive_error_string(writer.get());
        EXPECT_EQ(archive_write_data(writer.get(), member.data.data(), member.data.size()),
                  static_cast<la_ssize_t>(member.data.size()));
    }
    EXPECT_EQ(archive_write_close(writer.get()), ARCHIVE_OK);
    return bytes;
}

std::string lhaOf(std::string_view name, std::string_view data, uint32_t codePage) {
    const auto extension = [](uint8_t type, std::string_view body) {
        const std::string tagged = static_cast<char>(type) + std::string(body);
        return little(static_cast<uint16_t>(tagged.size() + sizeof(uint16_t))) + tagged;
    };
    const auto size = little(static_cast<uint32_t>(data.size()));
    constexpr uint32_t modified = 1'700'000'000;
    std::string header = "-lh0-" + size + size + little(modified) + "\x20\x02" + little(crc16(data)) + "U";
    header += extension(0, std::string(2, '\0')) + extension(1, name) + extension(0x46, little(codePage));
    header += little(uint16_t{0});
    header = little(static_cast<uint16_t>(header.size() + sizeof(uint16_t))) + header;
    constexpr size_t ownSum = 27; // counted as zero
    place(header, ownSum, little(crc16(header)));
    return header + std::string(data) + '\0';
}

std::string xarOf(std::string_view xml) {
    uint32_t low = 1;
    uint32_t high = 0;
    for (const char c : xml) {
        low = (low + static_cast<unsigned char>(c)) % 65'521;
        high = (high + low) % 65'521;
    }
    const auto length = static_cast<uint16_t>(xml.size());
    // zlib, one stored block.
    const std::string table = "\x78\x01\x01" + little(length) + little(static_cast<uint16_t>(~length)) +
                              std::string(xml) + big(high << 16U | low);
    return "xar!" + big(uint16_t{28}) + big(uint16_t{1}) + big(uint64_t{table.size()}) + big(uint64_t{xml.size()}) +
           big(uint32_t{0}) + table;
}

std::string isoWithLoop() {
    constexpr size_t sector = 2'048;
    constexpr uint32_t rootSector = 18;
    constexpr uint32_t areaSector = 19;
    constexpr uint32_t areaBytes = 34;
    constexpr uint32_t dataSector = 20;
    const auto both = [](auto number) { return little(number) + big(number); };
    const auto continuation = [&] {
        return std::string("NM\x06\x01\x00"
                           "aCE\x1c\x01",
                           10) +
               both(areaSector) + both(uint32_t{0}) + both(areaBytes);
    };
    const auto record = [&](uint32_t at, uint8_t flags, const std::string& name, const std::string& systemUse) {
        std::string bytes = std::string(1, '\0') + both(at) + both(uint32_t{sector}) + std::string(7, '\x01') +
                            static_cast<char>(flags) + std::string(2, '\0') + both(uint16_t{1}) +
                            static_cast<char>(name.size()) + name + (name.size() % 2 == 0 ? std::string(1, '\0') : "") +
                            systemUse;
        // The record's length comes first, before the length of its extension.
        return static_cast<char>(bytes.size() + 1) + bytes;
    };
    const std::string self(1, '\0');
    const std::string shared("SP\x07\x01\xbe\xef\x00"
                             "NM\x05\x01\x02",
                             12);
    std::string image(32 * sector, '\0'); // a shorter one is not taken for an image
    const auto volume = 16 * sector;
    place(image, volume,
          std::string("\x01"
                      "CD001"
                      "\x01",
                      7));
    place(image, volume + 80, both(uint32_t{32}));
    place(image, volume + 120, both(uint16_t{1}) + both(uint16_t{1}) + both(uint16_t{sector}));
    place(image, volume + 132, both(uint32_t{10}) + little(areaSector) + little(uint32_t{0}) + big(areaSector));
    place(image, volume + 156, record(rootSector, 2, self, ""));
    place(image, volume + 881, "\x01");
    place(image, volume + sector,
          std::string("\xff"
                      "CD001"
                      "\x01",
                      7));
    place(image, rootSector * sector,
          record(rootSector, 2, self, shared) + record(rootSector, 2, "\x01", "") +
              record(dataSector, 0, "A.TXT;1", continuation()));
    place(image, areaSector * sector, continuation());
    return image;
}

std::string failureOf(const std::function<void()>& operation) {
    try {
        operation();
        return {};
    } catch (const CancellationError&) {
        return "cancelled";
    } catch (const std::exception& error) {
        return userMessage(error);
    }
}

const json::object* entryNamed(const JsonObject& listing, std::string_view name) {
    for (const auto& entry : listing.at("entries").as_array())
        if (text(entry.as_object(), "name") == name)
            return &entry.as_object();
    return nullptr;
}

std::vector<std::string> namesOf(const JsonObject& listing) {
    std::vector<std::string> names;
    for (const auto& entry : listing.at("entries").as_array())
        names.push_back(text(entry.as_object(), "name"));
    return names;
}

std::string text(const JsonObject& record, std::string_view key) {
    return stringField(record, key).value_or("(none)");
}

ContainerFixture::ContainerFixture() : folder_("/") {
    std::string pattern = (fs::temp_directory_path() / "quillmere-containers-XXXXXX").native();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder");
    folder_ = FileUrl(pattern).resolvingSymlinks();
    useReaders(confinedReaders());
}

ContainerFixture::~ContainerFixture() {
    browser_.reset();
    std::error_code error;
    fs::remove_all(folder_.filesystemPath(), error);
}

ArchiveReaderFactory ContainerFixture::confinedReaders() {
    return ConfinedArchiveReader::factory(FileUrl(ARCHIVE_READER));
}

void ContainerFixture::useReaders(ArchiveReaderFactory readers) {
    browser_ = std::make_unique<ContainerBrowser>(
        path("cache"), ContainerBrowser::Options{.readers = std::move(readers), .now = [this] { return clock_(); }});
}

FileUrl ContainerFixture::write(std::string_view name, std::string_view bytes) const {
    const FileUrl file = path(name);
    std::ofstream(file.filesystemPath(), std::ios::binary) << bytes;
    return file;
}

FileUrl ContainerFixture::makeFolder(std::string_view name) const {
    fs::create_directories(path(name).filesystemPath());
    return path(name);
}

std::string ContainerFixture::contentsOf(const FileUrl& file) {
    std::ifstream stream(file.filesystemPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

ContainerOpenResult ContainerFixture::open(const JsonObject& listing, std::string_view name) {
    const auto* entry = entryNamed(listing, name);
    if (!entry)
        throw std::runtime_error("no entry named " + std::string(name));
    return browser_->open(text(listing, "token"), text(*entry, "id"), never_);
}

} // namespace quillmere::testing
