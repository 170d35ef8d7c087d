#pragma once

#include "containers/Session.h"

#include <memory>
#include <vector>

namespace quillmere {

/// The order in which people expect names: folders first, letters whatever their case, runs of digits by their value.
class NaturalOrder {
public:
    NaturalOrder();
    ~NaturalOrder();

    /// Stable.
    void sort(std::vector<const Node*>& nodes) const;

private:
    struct Collation;
    std::unique_ptr<Collation> collation_;
};

} // namespace quillmere
