#pragma once

namespace reelkeep {

/// A widget or layout that can shrink below its readable width.
class Readable {
public:
    /// The smallest width at which no word is broken, and nothing that belongs in one line is cut or wrapped.
    /// Device-independent pixels.
    virtual int readableWidth() const = 0;

protected:
    ~Readable() = default;
};

} // namespace reelkeep
