#include "base/CommandLine.h"
#include "base/Errors.h"
#include "containers/ConfinedArchiveReader.h"
#include "platform/common/EndOfProgram.h"
#include "platform/common/ProcessRegistry.h"
#include "platform/gtk/DesktopPlatform.h"
#include "platform/gtk/desktop/ProcessSetup.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "prepare/FilePreparation.h"
#include "shell/QuillmereDelegate.h"
#include "shell/SelfTest.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <system_error>

namespace {

using namespace quillmere;

void writeLog(const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
}

int selfTest() {
    const auto bundle = platform::FolderBundle::ofRunningProgram();
    const platform::Confinement confinement;
    platform::WorkerImageCodec images(bundle.helper("quillmere-image-worker"), confinement);
    const auto report = runSelfTest(bundle, images);
    std::fputs(report.output.c_str(), stdout);
    std::fputs(report.error.c_str(), stderr);
    return report.status;
}

constexpr const char* helpText =
    "Usage: Quillmere [FILE]\n"
    "Opens a file, a folder or an archive, in the window that is open already if there is one.\n"
    "FILE is a path or a file:// address.\n\n"
    "  --help       show this and end\n"
    "  --version    show the version and end\n"
    "  --self-test  check this copy of the program and end\n";

int say(const std::string& text) {
    return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

std::string versionOf(const platform::Bundle& bundle) {
    const auto list = bundle.propertyList();
    return list ? stringField(*list, "CFBundleShortVersionString").value_or("unknown") : "unknown";
}

QuillmereDelegate::Parts partsOf(const platform::Platform& system, const platform::Confinement& confinement) {
    return {.preparation = std::make_shared<const FilePreparation>(FilePreparation::Tools{
                .images = system.images, .exporter = system.mediaExporter, .confinement = confinement}),
            .makeContainerBrowser =
                [program = system.bundle.helper("quillmere-archive-reader")](const FileUrl& cache) {
                    return std::make_shared<ContainerBrowser>(
                        cache, ContainerBrowser::Options{.readers = ConfinedArchiveReader::factory(program)});
                },
            .log = writeLog};
}

void reportStart(const std::exception& error) {
    const bool fileSystem = dynamic_cast<const std::system_error*>(&error) != nullptr;
    std::fprintf(stderr, "Quillmere could not start: %s\n", fileSystem ? userMessage(error).c_str() : error.what());
}

[[noreturn]] void runApplication(std::vector<std::string> arguments) {
    platform::gtk::prepareProcess();
    const auto role = platform::gtk::claimInstance(arguments);
    if (role == platform::gtk::InstanceRole::handedOver)
        platform::endProgram(EXIT_SUCCESS); // a thread of the hand-over may still be at work
    platform::gtk::DesktopPlatform desktop(std::move(arguments), role);
    const auto system = desktop.seam();
    const auto delegate = QuillmereDelegate::make(system, partsOf(system, desktop.confinement()));
    int status = EXIT_FAILURE;
    try {
        status = desktop.run(*delegate);
    } catch (const std::exception& error) {
        reportStart(error);
    }
    platform::endProgram(status); // nothing is destroyed under threads that may be at work
}

} // namespace

int main(int argc, char** argv) {
    platform::ProcessRegistry::installEndOfProgram();
    // Characters are UTF-8 whatever the user's locale is; numbers and dates stay the program's own.
    if (!std::setlocale(LC_CTYPE, "") ||
        std::string(std::setlocale(LC_CTYPE, nullptr)).find("UTF-8") == std::string::npos)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    std::vector<std::string> arguments(argv, argv + argc);
    try {
        switch (commandLineRequest(arguments)) {
        case CommandLineRequest::selfTest:
            return selfTest();
        case CommandLineRequest::help:
            return say(helpText);
        case CommandLineRequest::version:
            return say("Quillmere " + versionOf(platform::FolderBundle::ofRunningProgram()) + "\n");
        case CommandLineRequest::run:
            break;
        }
        runApplication(std::move(arguments));
    } catch (const std::exception& error) {
        reportStart(error);
        return EXIT_FAILURE;
    }
}
