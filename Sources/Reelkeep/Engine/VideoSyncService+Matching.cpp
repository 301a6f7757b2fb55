#include "Text/TextOrder.h"
#include "VideoSyncService.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace reelkeep {

namespace {

/// Videos by what `matchKey` says of them, without making that text.
///
/// One flat array, searched from the place that the hash tells. Whatever is found there is compared itself: a hash
/// never decides. Made of the shorter list, it stays in the processor's cache where a card is compared with archives.
class VideoTable {
public:
    struct Slot {
        const VideoFile* video = nullptr; ///< The first one with its key; none in an empty slot.
        std::uint32_t tag = 0;            ///< Part of its hash: spares nearly every look at another video.
        bool isReviewed = false;
    };

    /// Room for `count` videos, and as many empty slots, so that searches are short.
    explicit VideoTable(std::size_t count)
    {
        while ((std::size_t(1) << bits) < 2 * count)
            ++bits;
        slots.resize(std::size_t(1) << bits);
    }

    /// The slot of the videos with this one's key; where there is none yet, the empty one that is theirs.
    Slot& slotOf(const VideoFile& video) { return slotOf(video, hashOf(video)); }

    /// The slot of the videos with this one's key, which is the first of them if there was none.
    Slot& insert(const VideoFile& video)
    {
        const std::uint64_t hash = hashOf(video);
        Slot& slot = slotOf(video, hash);
        if (!slot.video)
            slot = {.video = &video, .tag = tagOf(hash), .isReviewed = false};
        return slot;
    }

private:
    Slot& slotOf(const VideoFile& video, std::uint64_t hash)
    {
        for (std::size_t place = hash >> (64 - bits);; place = (place + 1) & (slots.size() - 1)) {
            Slot& slot = slots[place];
            if (!slot.video || (slot.tag == tagOf(hash) && isSame(*slot.video, video)))
                return slot;
        }
    }
    static std::uint64_t hashOf(const VideoFile& video)
    {
        constexpr std::uint64_t spread = 0x9e3779b97f4a7c15; // odd: the upper bits come to depend on all others
        return (foldedHash(video.fileName) + static_cast<std::uint64_t>(video.size)) * spread;
    }
    static std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash); }
    static bool isSame(const VideoFile& one, const VideoFile& other)
    {
        return one.size == other.size && isSameName(one.fileName, other.fileName);
    }

    unsigned bits = 1;
    std::vector<Slot> slots;
};

std::vector<const VideoFile*> notIn(const VideoList& reviewed, const VideoList& source)
{
    VideoTable table(std::min(source.size(), reviewed.size()));
    std::vector<const VideoFile*> missing;
    if (reviewed.size() < source.size()) {
        for (const VideoFile& video : reviewed)
            table.insert(video);
        for (const VideoFile& video : source)
            if (reviewed.empty() || !table.slotOf(video).video)
                missing.push_back(&video);
        return missing;
    }
    std::vector<const VideoTable::Slot*> slots;
    slots.reserve(source.size());
    for (const VideoFile& video : source)
        slots.push_back(&table.insert(video));
    for (const VideoFile& video : reviewed)
        table.slotOf(video).isReviewed = true; // of an empty slot too: nobody asks it
    auto slot = slots.begin();
    for (const VideoFile& video : source)
        if (!(*slot++)->isReviewed)
            missing.push_back(&video);
    return missing;
}

/// The first eight bytes of a key as a number that compares as they do.
std::uint64_t firstBytesOf(std::string_view key)
{
    std::array<unsigned char, sizeof(std::uint64_t)> first = {};
    std::copy_n(key.begin(), std::min(key.size(), first.size()), first.begin());
    std::uint64_t number = 0;
    for (const unsigned char byte : first)
        number = number << 8U | byte;
    return number;
}

using Videos = std::vector<const VideoFile*>;

/// Sorts by one text of the videos, and those in which it is the same by `then`; stable.
void sortBy(SharedText VideoFile::*text, const FileBrowserOrder& order, Videos::iterator begin, Videos::iterator end,
            const std::function<void(Videos::iterator, Videos::iterator)>& then)
{
    /// Most comparisons end in the key's first bytes, which need no look elsewhere in memory.
    struct Keyed {
        std::uint64_t firstBytes;
        std::string_view key;
        const VideoFile* video;
    };
    std::vector<std::string_view> texts;
    texts.reserve(static_cast<std::size_t>(end - begin));
    for (auto video = begin; video != end; ++video)
        texts.emplace_back((*video)->*text);
    const FileBrowserOrder::Keys keys = order.sortKeys(texts);
    std::vector<Keyed> sorted;
    sorted.reserve(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        sorted.push_back({firstBytesOf(keys[i]), keys[i], begin[static_cast<std::ptrdiff_t>(i)]});
    std::stable_sort(sorted.begin(), sorted.end(), [](const Keyed& a, const Keyed& b) {
        return a.firstBytes != b.firstBytes ? a.firstBytes < b.firstBytes : a.key < b.key;
    });

    std::transform(sorted.begin(), sorted.end(), begin, [](const Keyed& keyed) { return keyed.video; });
    for (auto first = begin; then && first != end;) {
        const auto last =
            std::find_if(first, end, [&](const VideoFile* video) { return video->*text != (*first)->*text; });
        if (last - first > 1)
            then(first, last);
        first = last;
    }
}

/// By name, and records of exactly the same name by relative path; whatever is equal in both keeps its order.
VideoList inFileBrowserOrder(Videos videos)
{
    const FileBrowserOrder order(collationLocale());
    sortBy(&VideoFile::fileName, order, videos.begin(), videos.end(),
           [&](auto first, auto last) { sortBy(&VideoFile::relativePath, order, first, last, nullptr); });
    VideoList::Records result;
    for (const VideoFile* video : videos)
        result.push_back(*video);
    return result;
}

} // namespace

VideoList VideoSyncService::missingVideos(const VideoList& source, const VideoList& reviewed)
{
    return inFileBrowserOrder(notIn(reviewed, source));
}

std::string VideoSyncService::matchKey(const VideoFile& video)
{
    return foldedName(video.fileName) + "::" + std::to_string(video.size);
}

} // namespace reelkeep
