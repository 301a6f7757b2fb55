#pragma once

namespace reelkeep {

/// A control that casts a shadow. The plate below draws it: no widget can draw outside of its own bounds.
class Raised {
public:
    virtual bool castsShadow() const = 0;

protected:
    ~Raised() = default;
};

} // namespace reelkeep
