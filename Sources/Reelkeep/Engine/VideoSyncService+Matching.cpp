#include "Parallel.h"
#include "Text/TextOrder.h"
#include "VideoSyncService.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace reelkeep {

namespace {

/// A hash table of videos by their `matchKey`, which it compares without making that text.
///
/// Open addressing with linear probing; every hit is verified. It is built from the shorter list, so it stays in the
/// processor's cache when a card is compared with large archives.
class VideoTable {
public:
    struct Slot {
        const VideoFile* video = nullptr; ///< The first one with its key; null in an empty slot.
        std::uint32_t tag = 0;            ///< Part of its hash; avoids nearly all comparisons of different videos.
        bool isReviewed = false;
    };

    /// At most half of the slots are used by `count` videos, so that searches are short.
    explicit VideoTable(std::size_t count)
    {
        while ((std::size_t(1) << bits) < 2 * count)
            ++bits;
        slots.resize(std::size_t(1) << bits);
    }

    /// The slot of the videos with this one's key, or the empty slot where they belong.
    Slot& slotOf(const VideoFile& video) { return slotOf(video, hashOf(video)); }

    /// The same; puts this video into the slot if it was empty.
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
        for (std::size_t index = hash >> (64 - bits);; index = (index + 1) & (slots.size() - 1)) {
            Slot& slot = slots[index];
            if (!slot.video || (slot.tag == tagOf(hash) && isSame(*slot.video, video)))
                return slot;
        }
    }
    static std::uint64_t hashOf(const VideoFile& video)
    {
        constexpr std::uint64_t spread = 0x9e3779b97f4a7c15; // odd: makes the upper bits depend on all others
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
        table.slotOf(video).isReviewed = true; // harmless for an empty slot: it is never read
    auto slot = slots.begin();
    for (const VideoFile& video : source)
        if (!(*slot++)->isReviewed)
            missing.push_back(&video);
    return missing;
}

using Videos = std::vector<const VideoFile*>;

/// A video with a key to sort it by. Most comparisons are decided by the key's first eight bytes, kept as a number that
/// compares like them, without a look elsewhere in memory.
struct Keyed {
    std::uint64_t firstBytes = 0;
    std::string_view key;
    const VideoFile* video = nullptr;

    bool operator<(const Keyed& other) const
    {
        return firstBytes != other.firstBytes ? firstBytes < other.firstBytes : key < other.key;
    }
};

std::uint64_t firstBytesOf(std::string_view key)
{
    std::array<unsigned char, sizeof(std::uint64_t)> first = {};
    std::copy_n(key.begin(), std::min(key.size(), first.size()), first.begin());
    std::uint64_t number = 0;
    for (const unsigned char byte : first)
        number = number << 8U | byte;
    return number;
}

/// Sorts `count` videos by one of their texts into `sorted`; stable. `keys` holds their keys.
void sortBy(SharedText VideoFile::*text, const FileBrowserOrder& order, const VideoFile* const* videos,
            std::size_t count, Keyed* sorted, std::string& keys)
{
    std::size_t length = 256;
    for (std::size_t i = 0; i < count; ++i)
        length += 3 * (videos[i]->*text).size() + 2; // Hardly ever more.
    keys.reserve(length);
    std::vector<std::size_t> ends;
    ends.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        order.appendSortKey(keys, videos[i]->*text);
        ends.push_back(keys.size());
    }
    std::size_t begin = 0;
    for (std::size_t i = 0; i < count; begin = ends[i++]) {
        const std::string_view key = std::string_view(keys).substr(begin, ends[i] - begin);
        sorted[i] = {firstBytesOf(key), key, videos[i]};
    }
    std::stable_sort(sorted, sorted + count);
}

/// The bounds of equal parts of `count` videos, one for each core if there are enough of them to be worth a thread.
std::vector<std::size_t> evenBounds(std::size_t count)
{
    constexpr std::size_t worthAThread = 5'000;
    const std::size_t parts =
        std::clamp<std::size_t>(count / worthAThread, 1, std::max(1U, std::thread::hardware_concurrency()));
    std::vector<std::size_t> bounds;
    for (std::size_t part = 0; part <= parts; ++part)
        bounds.push_back(count * part / parts);
    return bounds;
}

void sortByName(Videos& videos, const std::string& locale)
{
    const std::vector<std::size_t> bounds = evenBounds(videos.size());
    const std::size_t parts = bounds.size() - 1;
    std::vector<Keyed> sorted(videos.size());
    std::vector<std::string> keys(parts);
    inParallel(parts, [&](std::size_t part) {
        sortBy(&VideoFile::fileName, FileBrowserOrder(locale), videos.data() + bounds[part],
               bounds[part + 1] - bounds[part], sorted.data() + bounds[part], keys[part]);
    });
    for (std::size_t width = 1; width < parts; width *= 2) {
        for (std::size_t part = 0; part + width < parts; part += 2 * width)
            std::inplace_merge(sorted.data() + bounds[part], sorted.data() + bounds[part + width],
                               sorted.data() + bounds[std::min(part + 2 * width, parts)]);
    }
    std::transform(sorted.begin(), sorted.end(), videos.begin(), [](const Keyed& keyed) { return keyed.video; });
}

/// Sorts videos of exactly the same name, which stand side by side, by relative path.
void sortNamesakesByPath(Videos& videos, const std::string& locale)
{
    const auto endOfNamesakes = [&videos](std::size_t first, std::size_t limit) {
        std::size_t end = first + 1;
        while (end < limit && videos[end]->fileName == videos[first]->fileName)
            ++end;
        return end;
    };
    std::vector<std::size_t> bounds = evenBounds(videos.size());
    for (std::size_t part = 1; part + 1 < bounds.size(); ++part)
        bounds[part] = endOfNamesakes(bounds[part] - 1, videos.size());
    inParallel(bounds.size() - 1, [&](std::size_t part) {
        const FileBrowserOrder order(locale);
        for (std::size_t first = bounds[part]; first < bounds[part + 1];) {
            const std::size_t count = endOfNamesakes(first, bounds[part + 1]) - first;
            if (count > 1) {
                std::vector<Keyed> sorted(count);
                std::string keys;
                sortBy(&VideoFile::relativePath, order, videos.data() + first, count, sorted.data(), keys);
                for (std::size_t i = 0; i < count; ++i)
                    videos[first + i] = sorted[i].video;
            }
            first += count;
        }
    });
}

/// By name, then by relative path; records that are equal in both keep their order.
VideoList inFileBrowserOrder(Videos videos)
{
    const std::string locale = collationLocale();
    sortByName(videos, locale);
    sortNamesakesByPath(videos, locale);
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
