#include "UI/WidthShares.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace reelkeep {

std::vector<int> widthShares(const std::vector<WidthWish>& wishes, int available)
{
    std::vector<std::size_t> order(wishes.size());
    std::iota(order.begin(), order.end(), 0);
    const auto flexibility = [&wishes](std::size_t index) { return wishes[index].most - wishes[index].least; };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return flexibility(a) < flexibility(b); });

    std::vector<int> shares(wishes.size());
    int left = available;
    int leastOfRest = 0;
    for (const WidthWish& wish : wishes)
        leastOfRest += wish.least;
    for (std::size_t served = 0; served < order.size(); ++served) {
        const WidthWish& wish = wishes[order[served]];
        const auto unserved = int(order.size() - served);
        int offered = left / unserved;
        // A child that lacks at most a fifth gets its ideal width from the more flexible ones: an early line break
        // costs more than a few points less elsewhere.
        if (unserved > 1 && wish.ideal <= offered + offered / 5)
            offered = std::max(offered, wish.ideal);
        leastOfRest -= wish.least;
        const int granted = std::min(offered, left - leastOfRest);
        const int share = std::clamp(granted, wish.least, std::max(wish.most, wish.least));
        shares[order[served]] = share;
        left -= share;
    }
    return shares;
}

} // namespace reelkeep
