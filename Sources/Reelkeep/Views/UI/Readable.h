#pragma once

namespace reelkeep {

/// What can be made narrower than is good for it.
class Readable {
public:
    /// From this width on no word is broken inside, and nothing that belongs in one line is cut or wrapped.
    /// Device-independent pixels.
    virtual int readableWidth() const = 0;

protected:
    ~Readable() = default;
};

} // namespace reelkeep
