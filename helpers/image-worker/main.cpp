// Decodes one image: quillmere-image-worker INPUT OUTPUT.png LONGEST-SIDE. It is started confined and limited; a crash
// costs nobody but itself. How it went is in the exit status, see platform/common/WorkerImageCodec.h.

#include "helpers/image-worker/ImageReader.h"
#include "helpers/image-worker/PngSink.h"
#include "platform/common/WorkerImageCodec.h"

#include <charconv>
#include <csignal>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

using quillmere::platform::ImageWorkerExit;

int status(ImageWorkerExit exit) {
    return static_cast<int>(exit);
}

int convert(const std::string& input, const std::string& output, int longestSide) {
    try {
        const auto image = quillmere::images::openImage(input);
        const auto fitted = quillmere::images::fitted(image, longestSide);
        quillmere::images::writePng(fitted.get(), output);
        return status(ImageWorkerExit::written);
    } catch (const quillmere::images::WriteFailure&) {
        return status(ImageWorkerExit::writeFailed);
    } catch (const std::exception&) {
        return status(ImageWorkerExit::unreadable);
    }
}

} // namespace

int main(int count, char** values) {
    int longestSide = 0;
    if (count != 4)
        return 2;
    const std::string_view side(values[3]);
    if (std::from_chars(side.data(), side.data() + side.size(), longestSide).ec != std::errc() || longestSide < 1)
        return 2;
    // A file past its limit is a failed write, not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);
    if (!quillmere::images::openDecoders(values[0]))
        return status(ImageWorkerExit::unreadable);
    // Without the clean-up of every library, which takes longer than a small image.
    ::_exit(convert(values[1], values[2], longestSide));
}
