#pragma once

namespace reelkeep {

/// A control with a shadow. The plate below paints it, since a widget cannot paint outside its own bounds.
class Raised {
public:
    virtual bool castsShadow() const = 0;

protected:
    ~Raised() = default;
};

} // namespace reelkeep
