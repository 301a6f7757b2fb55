#pragma once

#include <vector>

namespace reelkeep {

/// What a child of a row needs and wants. Device-independent pixels.
struct WidthWish {
    int least; ///< It becomes no narrower.
    int ideal; ///< Nothing in it wraps.
    int most;  ///< More width would stay empty.
};

/// Shares `available` among the children of a row. Each, from the least to the most flexible, is offered an even share
/// of what is left, so that no child shrinks while another has more than it needs.
std::vector<int> widthShares(const std::vector<WidthWish>& wishes, int available);

} // namespace reelkeep
