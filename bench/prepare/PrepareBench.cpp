// Measures the preparation of files against native tools: bench_prepare [FOLDER FOR ITS FILES]. Prints medians and
// ratios.

#include "base/Clock.h"
#include "platform/common/NullMediaExporter.h"
#include "platform/common/WorkerImageCodec.h"
#include "prepare/FilePreparation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <vips/vips.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

struct Run {
    double seconds = 0;
    double megabytes = 0;
};

double secondsSince(SteadyTime start) {
    return std::chrono::duration<double>(steadyNow() - start).count();
}

/// Time and largest memory of a program; nothing measured when it fails.
Run run(std::vector<std::string> command) {
    std::vector<char*> arguments;
    for (auto& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const SteadyTime start = steadyNow();
    pid_t process = 0;
    int status = 0;
    rusage usage{};
    if (::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), ::environ) != 0 ||
        ::wait4(process, &status, 0, &usage) != process || status != 0)
        return {};
    return {secondsSince(start), static_cast<double>(usage.ru_maxrss) / 1024};
}

/// The middle one of three, or the first when it takes long.
Run median(const std::vector<std::string>& command) {
    constexpr double isLong = 10;
    std::vector<Run> runs{run(command)};
    while (runs.size() < 3 && runs[0].seconds > 0 && runs[0].seconds < isLong)
        runs.push_back(run(command));
    std::ranges::sort(runs, {}, &Run::seconds);
    return runs[runs.size() / 2];
}

/// Debian lets ImageMagick use a quarter of a gigabyte; the picture needs more.
void liftLimitsOfImageMagick(const fs::path& folder) {
    std::ofstream(folder / "policy.xml") << "<policymap><policy domain=\"resource\" name=\"memory\" value=\"4GiB\"/>"
                                            "<policy domain=\"resource\" name=\"map\" value=\"8GiB\"/>"
                                            "<policy domain=\"resource\" name=\"area\" value=\"1GP\"/>"
                                            "<policy domain=\"resource\" name=\"disk\" value=\"16GiB\"/></policymap>";
    ::setenv("MAGICK_CONFIGURE_PATH", folder.c_str(), 1);
}

double microseconds(int count, const std::function<void()>& action) {
    std::vector<double> rounds;
    for (int round = 0; round < 5; ++round) {
        const SteadyTime start = steadyNow();
        for (int i = 0; i < count; ++i)
            action();
        rounds.push_back(secondsSince(start) * 1e6 / count);
    }
    std::ranges::sort(rounds);
    return rounds[rounds.size() / 2];
}

/// A smooth picture with some grain, as cameras make them.
void makeTiff(const std::string& path) {
    VipsImage* grain = nullptr;
    VipsImage* slopes = nullptr;
    VipsImage* sum = nullptr;
    VipsImage* bands = nullptr;
    vips_gaussnoise(&grain, 12'000, 9'000, "mean", 0.0, "sigma", 3.0, nullptr);
    vips_sines(&slopes, 12'000, 9'000, "hfreq", 3.0, "vfreq", 2.0, nullptr);
    VipsImage* scaled = nullptr;
    vips_linear1(slopes, &scaled, 90, 128, nullptr);
    vips_add(scaled, grain, &sum, nullptr);
    VipsImage* const copies[]{sum, sum, sum};
    vips_bandjoin(const_cast<VipsImage**>(copies), &bands, 3, nullptr);
    VipsImage* samples = nullptr;
    vips_cast_uchar(bands, &samples, nullptr);
    vips_tiffsave(samples, path.c_str(), "compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW, nullptr);
    for (VipsImage* image : {samples, bands, sum, scaled, slopes, grain})
        g_object_unref(image);
}

void benchImages(const fs::path& folder) {
    const std::string tiff = folder / "large.tif";
    if (!fs::exists(tiff))
        makeTiff(tiff);
    const std::string output = folder / "out.png";
    liftLimitsOfImageMagick(folder);
    const Run ours = median({IMAGE_WORKER, tiff, output, "8192"});
    std::printf("12000 x 9000 LZW TIFF to PNG\n  image worker     %6.2f s %6.0f MB  (file %.0f MB)\n", ours.seconds,
                ours.megabytes, static_cast<double>(fs::file_size(output)) / 1e6);
    for (const auto& command : {std::vector<std::string>{"vipsthumbnail", tiff, "--size", "8192x8192>", "-o", output},
                                std::vector<std::string>{"/usr/bin/convert", tiff, "-resize", "8192x8192>", output}}) {
        const Run theirs = median(command);
        if (theirs.seconds > 0)
            std::printf("  %-16s %6.2f s %6.0f MB  ratio %.2f\n", command[0].c_str(), theirs.seconds, theirs.megabytes,
                        ours.seconds / theirs.seconds);
        else
            std::printf("  %-16s not measured: it failed or is not installed\n", command[0].c_str());
    }
}

void benchCache(const fs::path& folder) {
    const platform::Confinement confinement;
    platform::WorkerImageCodec images(FileUrl(IMAGE_WORKER), confinement);
    platform::NullMediaExporter exporter;
    const FilePreparation preparation({.images = images, .exporter = exporter, .confinement = confinement});
    const FileUrl cache(folder / "cache");
    const FileUrl photo(folder / "small.tif");
    const FileUrl text(folder / "notes.txt");
    VipsImage* black = nullptr;
    vips_black(&black, 64, 64, nullptr);
    vips_tiffsave(black, photo.path().c_str(), nullptr);
    g_object_unref(black);
    std::ofstream(text.filesystemPath()) << "notes";
    const SteadyTime start = steadyNow();
    preparation.prepare(photo, cache);
    std::printf("smallest conversion, wall and worker  %8.1f ms\n", secondsSince(start) * 1e3);
    struct stat info{};
    const double stat = microseconds(10'000, [&] { ::stat(photo.path().c_str(), &info); });
    const double hit = microseconds(10'000, [&] { preparation.prepare(photo, cache); });
    const double pass = microseconds(10'000, [&] { preparation.prepare(text, cache); });
    std::printf("stat of the file %6.2f us, cache hit %6.2f us, pass-through %6.2f us\n", stat, hit, pass);
}

} // namespace
} // namespace quillmere

int main(int count, char** values) {
    const std::filesystem::path folder =
        count > 1 ? values[1] : std::filesystem::temp_directory_path() / "bench-prepare";
    std::filesystem::create_directories(folder);
    if (vips_init(values[0]) != 0)
        return 1;
    quillmere::benchImages(folder);
    quillmere::benchCache(folder);
    return 0;
}
