#include "containers/NaturalOrder.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace quillmere {

namespace {

/// The user's language; the "C" locale would sort by code point.
icu::Locale nameLocale() {
    const icu::Locale& locale = icu::Locale::getDefault();
    return std::strstr(locale.getName(), "POSIX") ? icu::Locale::getRoot() : locale;
}

struct Row {
    const Node* node;
    size_t keyStart;
    size_t keyLength;
};

} // namespace

struct NaturalOrder::Collation {
    std::unique_ptr<icu::Collator> collator;
};

NaturalOrder::NaturalOrder() : collation_(std::make_unique<Collation>()) {
    UErrorCode status = U_ZERO_ERROR;
    collation_->collator.reset(icu::Collator::createInstance(nameLocale(), status));
    if (U_FAILURE(status) || !collation_->collator)
        throw std::runtime_error("collation is unavailable");
    collation_->collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
    collation_->collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    collation_->collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
}

NaturalOrder::~NaturalOrder() = default;

void NaturalOrder::sort(std::vector<const Node*>& nodes) const {
    std::string keys;
    std::vector<Row> rows;
    rows.reserve(nodes.size());
    std::vector<uint8_t> key(256);
    for (const Node* node : nodes) {
        const auto name = icu::UnicodeString::fromUTF8(node->name());
        int32_t length = collation_->collator->getSortKey(name, key.data(), static_cast<int32_t>(key.size()));
        if (static_cast<size_t>(length) > key.size()) {
            key.resize(static_cast<size_t>(length));
            length = collation_->collator->getSortKey(name, key.data(), length);
        }
        rows.push_back({node, keys.size(), static_cast<size_t>(length)});
        keys.append(key.begin(), key.begin() + length);
    }
    const auto keyOf = [&](const Row& row) { return std::string_view(keys).substr(row.keyStart, row.keyLength); };
    std::ranges::sort(rows, [&](const Row& left, const Row& right) {
        if (left.node->directory != right.node->directory)
            return left.node->directory;
        const int order = keyOf(left).compare(keyOf(right));
        return order != 0 ? order < 0 : left.keyStart < right.keyStart; // keys were made in the given order
    });
    std::ranges::transform(rows, nodes.begin(), &Row::node);
}

} // namespace quillmere
