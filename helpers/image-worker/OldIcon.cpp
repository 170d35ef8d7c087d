#include "helpers/image-worker/OldIcon.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillmere::images {

namespace {

using Bytes = std::vector<unsigned char>;
using Colour = std::array<unsigned char, 3>;

struct Form {
    std::string_view type;
    size_t side;
    unsigned depth;
    std::string_view mask;       ///< a byte for each pixel
    std::string_view simpleMask; ///< a bit for each pixel, behind the bits of a black and white image
};

/// The best first.
constexpr std::array<Form, 10> forms{{{"it32", 128, 32, "t8mk", ""},
                                      {"ih32", 48, 32, "h8mk", "ich#"},
                                      {"il32", 32, 32, "l8mk", "ICN#"},
                                      {"is32", 16, 32, "s8mk", "ics#"},
                                      {"ich8", 48, 8, "h8mk", "ich#"},
                                      {"icl8", 32, 8, "l8mk", "ICN#"},
                                      {"ics8", 16, 8, "s8mk", "ics#"},
                                      {"ich#", 48, 1, "h8mk", "ich#"},
                                      {"ICN#", 32, 1, "l8mk", "ICN#"},
                                      {"ics#", 16, 1, "s8mk", "ics#"}}};

std::string_view contentsOf(std::span<const IconMember> members, std::string_view type) {
    const auto found = std::ranges::find(members, type, &IconMember::type);
    return found == members.end() ? std::string_view() : found->contents;
}

unsigned char byteAt(std::string_view bytes, size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

unsigned bitAt(std::string_view bits, size_t at) {
    return unsigned{byteAt(bits, at / 8)} >> (7 - at % 8) & 1U;
}

/// A palette of six steps for each colour, then finer ones of red, green, blue and grey, from light to dark.
Colour paletteColour(unsigned index) {
    constexpr unsigned cube = 215;
    constexpr std::array<unsigned char, 10> steps{0xee, 0xdd, 0xbb, 0xaa, 0x88, 0x77, 0x55, 0x44, 0x22, 0x11};
    const auto step = [](unsigned value) { return static_cast<unsigned char>((5 - value % 6) * 51); };
    if (index < cube)
        return {step(index / 36), step(index / 6), step(index)};
    if (index == 255)
        return {0, 0, 0};
    const auto ramp = (index - cube) / steps.size();
    const auto value = steps[(index - cube) % steps.size()];
    if (ramp == 3)
        return {value, value, value};
    Colour colour{};
    colour[ramp] = value;
    return colour;
}

/// All the red, then all the green and blue, each in runs.
bool unpackColours(std::string_view packed, Bytes& samples) {
    const size_t pixels = samples.size() / 4;
    size_t at = 0;
    for (size_t channel = 0; channel < 3; ++channel)
        for (size_t done = 0; done < pixels;) {
            if (at >= packed.size())
                return false;
            const size_t code = byteAt(packed, at++);
            const bool isRepeat = code >= 128;
            const size_t count = isRepeat ? code - 125 : code + 1;
            if (count > pixels - done || (isRepeat ? 1 : count) > packed.size() - at)
                return false;
            for (size_t i = 0; i < count; ++i)
                samples[(done + i) * 4 + channel] = byteAt(packed, isRepeat ? at : at + i);
            at += isRepeat ? 1 : count;
            done += count;
        }
    return true;
}

bool takeColours(const Form& form, std::string_view contents, Bytes& samples) {
    const size_t pixels = form.side * form.side;
    if (form.depth == 32) {
        constexpr size_t lead = 4; // before the largest form, without a meaning
        if (form.side == 128)
            contents.remove_prefix(std::min(contents.size(), lead));
        if (contents.size() != pixels * 4)
            return unpackColours(contents, samples);
        for (size_t i = 0; i < pixels * 4; ++i)
            if (i % 4 != 0) // an unused byte comes first
                samples[i - 1] = byteAt(contents, i);
        return true;
    }
    if (contents.size() < pixels * form.depth / 8)
        return false;
    for (size_t i = 0; i < pixels; ++i) {
        const auto colour = paletteColour(form.depth == 8 ? byteAt(contents, i) : bitAt(contents, i) * 255);
        std::ranges::copy(colour, samples.begin() + static_cast<std::ptrdiff_t>(i * 4));
    }
    return true;
}

/// Without a whole mask everything is shown.
void takeMask(const Form& form, std::span<const IconMember> members, Bytes& samples) {
    const size_t pixels = form.side * form.side;
    const auto mask = contentsOf(members, form.mask);
    const auto bits = contentsOf(members, form.simpleMask);
    for (size_t i = 0; i < pixels; ++i)
        samples[i * 4 + 3] = mask.size() >= pixels       ? byteAt(mask, i)
                             : bits.size() >= pixels / 4 ? static_cast<unsigned char>(bitAt(bits, pixels + i) * 255)
                                                         : 255;
}

} // namespace

std::optional<Image> oldIcon(std::span<const IconMember> members) {
    for (const Form& form : forms) {
        Bytes samples(form.side * form.side * 4);
        const auto contents = contentsOf(members, form.type);
        if (contents.empty() || !takeColours(form, contents, samples))
            continue;
        takeMask(form, members, samples);
        const auto side = static_cast<int>(form.side);
        return imageOver(std::make_shared<const Bytes>(std::move(samples)), side, side, 4);
    }
    return std::nullopt;
}

} // namespace quillmere::images
