#include "shell/SelfTest.h"

#include "base/Errors.h"
#include "base/Fatal.h"
#include "base/Uuid.h"
#include "files/LocalFiles.h"
#include "lifecycle/AppLifecycleController.h"
#include "lifecycle/ApplicationRegistration.h"

#include <filesystem>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

struct SelfTestError : std::runtime_error {
    SelfTestError(int number, const char* message) : std::runtime_error(message), code(number) {}
    int code;
};

void require(bool holds) {
    if (!holds)
        std::abort();
}

void checkInstalledBundle() {
    const std::vector<FileUrl> folders = {FileUrl("/Applications"), FileUrl("/Users/test/Applications")};
    const auto installed = [&](const char* bundle, const char* identifier) {
        return AppLifecycleController::installedBundle(FileUrl(bundle), identifier, folders);
    };
    constexpr const char* ours = "app.quillmere.viewer";
    require(installed("/Applications/Quillmere.app", ours));
    require(installed("/Users/test/Applications/Quillmere.app", ours));
    for (const auto* refused :
         {"/Volumes/Quillmere/Quillmere.app", "/ApplicationsElse/Quillmere.app", "/Applications/Other.app",
          "/Applications/Other.app/Contents/Quillmere.app", "/tmp/Quillmere.app"})
        require(!installed(refused, ours));
    require(!installed("/Applications/Quillmere.app", "another.app"));
}

void checkInstallationIdentity() {
    const auto identity = [](uint64_t fileNumber) {
        return AppLifecycleController::installationIdentity(
            FileUrl("/Applications/Quillmere.app"),
            {.fileSystemNumber = 1, .fileNumber = fileNumber, .creationDate = std::nullopt});
    };
    const std::string first = identity(10);
    require(first == identity(10));
    require(first != identity(11));
}

void checkRegistrationPaths() {
    const auto accepted = [](const char* bundle, const char* folder) {
        return ApplicationRegistration::isInstalledBundle(FileUrl(bundle), {FileUrl(folder)});
    };
    require(accepted("/Applications/Quillmere.app", "/Applications"));
    require(!accepted("/ApplicationsElse/Quillmere.app", "/Applications"));
    require(!accepted("/Volumes/Quillmere/Quillmere.app", "/Applications"));
    require(!accepted("/Applications/Quillmere.app/Contents", "/Applications"));
    require(accepted("/Users/quill/Applications/Quillmere.app", "/Users/quill/Applications"));
}

void checkByteRanges() {
    constexpr uint64_t size = 100;
    const ByteRange middle = LocalFiles::byteRange("bytes=10-19", size);
    const ByteRange suffix = LocalFiles::byteRange("bytes=-8", size);
    const ByteRange open = LocalFiles::byteRange("bytes=90-", size);
    require(middle == ByteRange{.start = 10, .length = 10, .partial = true});
    require(suffix.start == 92 && suffix.length == 8);
    require(open.start == 90 && open.length == 10);
    for (const auto* refused : {"bytes=100-", "bytes=2-1", "bytes=-0", "bytes=0-1,3-4", "nope"}) {
        try {
            LocalFiles::byteRange(refused, size);
        } catch (const FileFailure&) {
            continue;
        }
        fatalStop((std::string("Invalid range accepted: ") + refused).c_str());
    }
}

bool canDecode(const FileUrl& image, platform::ImageCodec& images) {
    std::error_code ignored;
    const FileUrl picture = FileUrl(fs::temp_directory_path() / ("quillmere-self-test-" + newUuid() + ".png"));
    const bool decoded = images.writeThumbnail(image, picture, 64) == platform::ImageOutcome::written;
    fs::remove(picture.filesystemPath(), ignored);
    return decoded;
}

void checkDocumentIcons(const platform::Bundle& bundle, platform::ImageCodec& images) {
    const SelfTestError missing(1, "Bundle resources are missing.");
    const SelfTestError undecodable(2, "A document icon could not be decoded.");
    const auto resources = bundle.resources();
    const auto properties = bundle.propertyList();
    const auto* types = properties ? properties->if_contains("CFBundleDocumentTypes") : nullptr;
    if (!resources || !types || !types->is_array())
        throw missing;
    for (const auto& type : types->get_array())
        if (!type.is_object())
            throw missing;
    for (const auto& type : types->get_array()) {
        const auto icon = stringField(type.get_object(), "CFBundleTypeIconFile");
        if (!icon || !canDecode(resources->appending(*icon), images))
            throw undecodable;
    }
}

} // namespace

SelfTestReport runSelfTest(const platform::Bundle& bundle, platform::ImageCodec& images) {
    try {
        checkInstalledBundle();
        checkInstallationIdentity();
        checkRegistrationPaths();
        checkByteRanges();
        checkDocumentIcons(bundle, images);
    } catch (const SelfTestError& error) {
        return {.status = 1,
                .output = {},
                .error = "Error Domain=Quillmere.SelfTest Code=" + std::to_string(error.code) + " \"" + error.what() +
                         "\"\n"};
    } catch (const std::exception& error) {
        return {.status = 1, .output = {}, .error = userMessage(error) + "\n"};
    }
    return {.status = 0,
            .output = "Quillmere macOS byte-range, registration-path and document-icon self-tests passed\n",
            .error = {}};
}

} // namespace quillmere
