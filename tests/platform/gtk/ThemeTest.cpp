#include "platform/view/Theme.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <string>

namespace quillmere::view {
namespace {

std::string pageFile(const std::string& name) {
    std::ifstream in(std::string(QUILLMERE_PAGE "/") + name);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The number that a calculation of the style sheet comes to: sums, products, min, max and clamp of numbers and names.
class Calculation {
public:
    Calculation(std::string text, std::map<std::string, double> names)
        : text_(std::move(text)), names_(std::move(names)) {}

    double sum() {
        double value = product();
        while (take('+'))
            value += product();
        return value;
    }

private:
    double product() {
        double value = factor();
        while (take('*'))
            value *= factor();
        return value;
    }
    double factor() {
        skip();
        if (std::isdigit(static_cast<unsigned char>(text_[at_])) || text_[at_] == '.') {
            size_t length = 0;
            const double value = std::stod(text_.substr(at_), &length);
            at_ += length;
            return value;
        }
        std::string name;
        while (at_ < text_.size() && (std::isalpha(static_cast<unsigned char>(text_[at_])) || text_[at_] == '-'))
            name += text_[at_++];
        if (!take('('))
            return names_.at(name);
        if (name == "var") {
            const size_t end = text_.find(')', at_);
            const double value = names_.at(text_.substr(at_, end - at_));
            at_ = end + 1;
            return value;
        }
        std::vector<double> values{sum()};
        while (take(','))
            values.push_back(sum());
        take(')');
        if (name == "clamp")
            return std::clamp(values.at(1), values.at(0), values.at(2));
        return name == "min" ? *std::ranges::min_element(values) : *std::ranges::max_element(values); // or calc
    }
    bool take(char wanted) {
        skip();
        if (at_ >= text_.size() || text_[at_] != wanted)
            return false;
        ++at_;
        return true;
    }
    void skip() {
        while (at_ < text_.size() && text_[at_] == ' ')
            ++at_;
    }

    friend class Tokens;
    std::string text_;
    std::map<std::string, double> names_;
    size_t at_ = 0;
};

/// The page's tokens of one shade for one tint.
class Tokens {
public:
    Tokens(Shade shade, const Color& tint, double accentHue) : tint_(toOklch(tint)), accentHue_(accentHue) {
        const std::string css = pageFile("styles/tokens.css");
        const size_t start = css.find(shade == Shade::dark ? ":root, [data-theme=dark] {" : "[data-theme=light] {");
        block_ = css.substr(start, css.find("\n}", start) - start);
    }

    std::string text(const std::string& token) const {
        std::smatch found;
        return std::regex_search(block_, found, std::regex("--" + token + ": ([^;]+);")) ? found[1].str() : "";
    }
    double number(const std::string& token) const { return std::stod(text(token)); }
    Color color(const std::string& token) const { return fromOklch(oklch(token)); }

private:
    Oklch oklch(const std::string& token) const {
        static const std::regex form(R"(oklch\((?:from var\(--([a-z]+)\) )?(.*)\))");
        const std::string value = text(token);
        std::smatch found;
        if (!std::regex_match(value, found, form))
            throw std::runtime_error(token + ": " + value);
        const Oklch from = found[1] == "base" ? oklch("base") : tint_;
        Calculation parts(found[2].str(),
                          {{"l", from.lightness}, {"c", from.chroma}, {"h", from.hue}, {"--accent-h", accentHue_}});
        const double lightness = parts.sum(), chroma = parts.sum(), hue = parts.sum();
        return {.lightness = lightness, .chroma = chroma, .hue = hue};
    }

    Oklch tint_;
    double accentHue_;
    std::string block_;
};

double constantOf(const std::string& script, const std::string& name) {
    std::smatch found;
    return std::regex_search(script, found, std::regex("const " + name + " = ([0-9.]+);")) ? std::stod(found[1]) : -1;
}

TEST(Theme, HasTheColoursOfThePagesStyleSheet) {
    const std::string script = pageFile("appearance.ts");
    const double lightFrom = constantOf(script, "LIGHT_FROM"), colouredFrom = constantOf(script, "COLOURED_FROM");
    for (const unsigned tint : {0x141614U, 0x000000U, 0xffffffU, 0xf2efe8U, 0x808080U, 0x99999aU, 0x9b9b9bU, 0x1c2a3aU,
                                0x6b2a1cU, 0xff0000U, 0x00ff00U, 0x0000ffU, 0xffd400U, 0xcfe8ffU}) {
        const Color color{.red = ((tint >> 16U) & 0xffU) / 255.0,
                          .green = ((tint >> 8U) & 0xffU) / 255.0,
                          .blue = (tint & 0xffU) / 255.0};
        const auto shade = luminance(color) >= lightFrom ? Shade::light : Shade::dark;
        const auto theme = Theme::fromTint(color);
        EXPECT_EQ(theme.shade, shade) << std::hex << tint;
        const Tokens tokens(shade, color, toOklch(color).chroma > colouredFrom ? toOklch(color).hue : 168);
        const struct {
            const char* token;
            Color native;
        } rows[] = {{"ink", theme.ink},       {"ink-2", theme.secondInk},
                    {"accent", theme.accent}, {"on-accent", theme.onAccent},
                    {"danger", theme.danger}, {"float", theme.glass}};
        for (const auto& row : rows) {
            const Color page = tokens.color(row.token);
            EXPECT_NEAR(page.red, row.native.red, 0.002) << row.token << " " << std::hex << tint;
            EXPECT_NEAR(page.green, row.native.green, 0.002) << row.token << " " << std::hex << tint;
            EXPECT_NEAR(page.blue, row.native.blue, 0.002) << row.token << " " << std::hex << tint;
        }
        EXPECT_EQ(tokens.number("a-float"), theme.glass.alpha) << std::hex << tint;
    }
}

Color over(const Color& top, double alpha, const Color& below) {
    const auto mix = [alpha](double upper, double lower) { return upper * alpha + lower * (1 - alpha); };
    return {.red = mix(top.red, below.red), .green = mix(top.green, below.green), .blue = mix(top.blue, below.blue)};
}

double contrast(const Color& a, const Color& b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

/// The colour and the strength of what lies over the soft copy of a photo.
std::pair<Color, double> softVeil(const std::string& script, Shade shade) {
    const bool isLight = shade == Shade::light;
    std::smatch alphas, colors;
    if (!std::regex_search(script, alphas, std::regex("globalAlpha = theme === 'light' \\? ([0-9.]+) : ([0-9.]+);")) ||
        !std::regex_search(script, colors, std::regex("fillStyle = theme === 'light' \\? '#(.{6})' : '#(.{6})';")))
        throw std::runtime_error("no veil in the script");
    const auto color = static_cast<unsigned>(std::stoul(colors[isLight ? 1 : 2].str(), nullptr, 16));
    return {{.red = ((color >> 16U) & 0xffU) / 255.0,
             .green = ((color >> 8U) & 0xffU) / 255.0,
             .blue = (color & 0xffU) / 255.0},
            std::stod(alphas[isLight ? 1 : 2].str())};
}

TEST(Theme, TextIsLegibleOnEveryTintAndPhoto) {
    const std::string script = pageFile("appearance.ts");
    const double colouredFrom = constantOf(script, "COLOURED_FROM");
    for (int step = 0; step < 9 * 9 * 9; ++step) {
        const Color tint{.red = step % 9 / 8.0, .green = step / 9 % 9 / 8.0, .blue = step / 81 / 8.0};
        const auto shade = Theme::fromTint(tint).shade;
        const Tokens tokens(shade, tint, toOklch(tint).chroma > colouredFrom ? toOklch(tint).hue : 168);
        const Color ink = tokens.color("ink");
        for (const double behind : {0.0, 1.0}) {
            const Color extreme{.red = behind, .green = behind, .blue = behind};
            const auto [veil, strength] = softVeil(script, shade);
            for (const Color& below : {over(tint, 0.65, extreme), over(veil, strength, extreme)}) {
                const Color pane = over(tokens.color("base"), tokens.number("a-pane"), below);
                const Color sheet = over(tokens.color("base"), tokens.number("a-sheet"), below);
                const Color capsule = over(tokens.color("float"), tokens.number("a-float"), below);
                const struct {
                    const char* text;
                    Color ground;
                } rows[] = {{"ink", over(tokens.color("accent"), 0.18, pane)}, // a selected row
                            {"ink-2", over(ink, 0.05, pane)},                  // a row under the pointer
                            {"ink", capsule},
                            {"ink-2", capsule},
                            {"accent", pane},
                            {"danger", pane},
                            {"warn", pane},
                            {"ink", sheet},
                            {"ink-2", sheet},
                            {"on-accent", tokens.color("accent")}};
                for (const auto& row : rows)
                    EXPECT_GE(contrast(tokens.color(row.text), row.ground), 4.5)
                        << row.text << " tint " << tint.red << " " << tint.green << " " << tint.blue << " behind "
                        << behind;
            }
        }
    }
}

} // namespace
} // namespace quillmere::view
