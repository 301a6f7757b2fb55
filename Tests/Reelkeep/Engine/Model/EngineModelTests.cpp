#include "Files/FileError.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"
#include "Model/EngineRuns.h"
#include "Model/FileTree.h"
#include "Model/NaiveEngine.h"
#include "VideoSyncService.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace reelkeep {

void showValue(const TreeEntry& entry, std::ostream& stream)
{
    stream << "{" << static_cast<int>(entry.kind) << " ";
    for (const std::string& component : entry.path)
        stream << "/" << component;
    stream << " " << entry.size << " " << entry.leadsTo << " " << entry.mode << "}";
}

namespace {

using Texts = std::vector<std::string>;

// --- Generated input

/// Names that are the same or nearly the same, hidden ones, packages, videos and others. Each may name a file or a
/// folder.
rc::Gen<std::string> names()
{
    return rc::gen::weightedOneOf<std::string>(
        {{8, rc::gen::element<std::string>("a.mov", "A.MOV", "b.mp4", "B.Mp4", "C1.MOV", "C01.MOV", "C10.MOV", "c2.mov",
                                           "\u00e9.mov", "e\u0301.MOV", "\u00c9.mov", "bad\xff.mov", "bad\xfe.mov",
                                           "x.m\u212av", "a.mov.mts")},
         {6, rc::gen::element<std::string>("d", "e", "DCIM", "100CANON", "AVCHD", "a::b", " ", "...")},
         {3, rc::gen::element<std::string>(".h.mov", ".d", "P.app", "Q.FcpBundle", "R.band", "$RECYCLE.BIN",
                                           "$recycle.bin", "System Volume Information", "app", ".app")},
         {2, rc::gen::element<std::string>("x.txt", "noext", "mov", "a.mov.", "a.movx", "a.m", "x.m\u0130v")},
         {1, rc::gen::just(cardPath)}});
}

const Texts roots = {"card", "A", "B", "A/d", "card/d", "card/d/e", "a.mov", "link", "nowhere", ".A"};

rc::Gen<Texts> pathsInTree()
{
    return rc::gen::map(rc::gen::tuple(rc::gen::weightedOneOf<std::string>({{6, rc::gen::just<std::string>("card")},
                                                                            {3, rc::gen::just<std::string>("A")},
                                                                            {2, rc::gen::just<std::string>("B")},
                                                                            {1, rc::gen::just<std::string>(".A")}}),
                                       rc::gen::resize(4, rc::gen::container<Texts>(names())), names()),
                        [](const std::tuple<std::string, Texts, std::string>& parts) {
                            Texts path = std::get<1>(parts);
                            path.insert(path.begin(), std::get<0>(parts));
                            path.push_back(std::get<2>(parts));
                            return path;
                        });
}

rc::Gen<TreeEntry> entries(const rc::Gen<int>& modes)
{
    using Kind = TreeEntry::Kind;
    return rc::gen::build<TreeEntry>(
        rc::gen::set(&TreeEntry::kind, rc::gen::weightedElement<Kind>(
                                           {{16, Kind::file}, {3, Kind::folder}, {2, Kind::link}, {1, Kind::pipe}})),
        rc::gen::set(&TreeEntry::path, pathsInTree()), rc::gen::set(&TreeEntry::size, rc::gen::inRange(0, 3)),
        rc::gen::set(&TreeEntry::leadsTo, rc::gen::element<std::string>("nowhere", ".", "..", "../../A", "a.mov")),
        rc::gen::set(&TreeEntry::mode, modes));
}

std::vector<TreeEntry> anyTree(const rc::Gen<int>& modes = rc::gen::just(-1))
{
    auto tree = *rc::gen::container<std::vector<TreeEntry>>(entries(modes));
    tree.push_back({.kind = TreeEntry::Kind::link, .path = {"link"}, .leadsTo = "card"});
    return tree;
}

Texts anyRoots()
{
    return *rc::gen::resize(5, rc::gen::container<Texts>(rc::gen::elementOf(roots)));
}

/// The engine's list, after checking that it equals the model's.
VideoList checkedScan(const Texts& places)
{
    const VideoList found = scan(places);
    RC_ASSERT(textOf(plain(found)) == textOf(naive::scan(places, true).value()));
    return found;
}

class EngineModel : public testing::Test {
protected:
    EngineModel() { speak("es_ES"); }
    ~EngineModel() override { ::unsetenv("LC_ALL"); }

    void speak(const std::string& chosen)
    {
        language = chosen;
        ::setenv("LC_ALL", (chosen + ".UTF-8").c_str(), 1);
    }

    std::string language;
};

RC_GTEST_FIXTURE_PROP(EngineModel, scansMatchesAndOrdersAsTheModel, ())
{
    speak(*rc::gen::element<std::string>("es_ES", "en_US", "sv_SE", "cs_CZ", "ja_JP"));
    const FileTree tree(anyTree());
    const VideoList source = checkedScan({tree.path(*rc::gen::elementOf(roots))});
    const VideoList reviewed = checkedScan(placesOf(anyRoots(), tree));

    const VideoList missing = VideoSyncService::missingVideos(source, reviewed);

    RC_ASSERT(textOf(plain(missing)) == textOf(naive::missing(plain(source), plain(reviewed), language)));
    RC_ASSERT(VideoSyncService::missingVideos(source, reviewed) == missing);
    std::vector<VideoFile> backwards(reviewed.begin(), reviewed.end());
    std::reverse(backwards.begin(), backwards.end());
    RC_ASSERT(VideoSyncService::missingVideos(source, backwards) == missing);
}

/// Whether a folder between `root` and the file `below` it is a link, which no analysis follows.
bool leadsThroughALink(const std::string& root, const std::string& below)
{
    for (auto end = below.find('/'); end != std::string::npos; end = below.find('/', end + 1))
        if (std::filesystem::is_symlink(root + "/" + below.substr(0, end)))
            return true;
    return false;
}

/// Engine and model copy in equal trees, and an analysis follows.
RC_GTEST_FIXTURE_PROP(EngineModel, copiesAsTheModelAndThenMissesWhatItOmitted, ())
{
    const auto description = anyTree();
    const FileTree tree(description);
    const FileTree twin(description);
    const std::string source = *rc::gen::elementOf(roots);
    const std::string destination = *rc::gen::element<std::string>("A", "A", "B", "new/er", "card", "A/d", "card/d");
    const bool preserves = *rc::gen::arbitrary<bool>();
    Texts reviewed = anyRoots();
    reviewed.push_back(destination);
    const VideoList missing =
        VideoSyncService::missingVideos(checkedScan({tree.path(source)}), checkedScan(placesOf(reviewed, tree)));

    const auto missingInTwin = naive::missing(naive::scan({twin.path(source)}, true).value(),
                                              naive::scan(placesOf(reviewed, twin), true).value(), language);
    const naive::Copy expected = naive::copy(missingInTwin, twin.path(source), twin.path(destination), preserves);
    const EngineCopy done = copy(missing, tree.path(source), tree.path(destination), preserves);

    RC_ASSERT(done.reports == expected.reports);
    RC_ASSERT(done.failed == expected.failed);
    RC_ASSERT(tree.everything() == twin.everything());
    if (!done.failed) {
        RC_ASSERT(done.summary.copiedCount == static_cast<std::int64_t>(expected.copied.size()));
        RC_ASSERT(done.summary.skippedCount == static_cast<std::int64_t>(expected.skipped.size()));
        RC_ASSERT(done.summary.destinationRoot == Location(tree.path(destination)));
    }
    const VideoList after =
        VideoSyncService::missingVideos(checkedScan({tree.path(source)}), checkedScan(placesOf(reviewed, tree)));
    bool areAllReviewed = true;
    for (const naive::Video& video : expected.copied) {
        const std::string below = preserves ? video.relativePath : video.fileName;
        const bool isReviewed = !leadsThroughALink(tree.path(destination), below);
        areAllReviewed &= isReviewed;
        // A shortened path refers to another file, or to none.
        if (isReviewed && video.url == twin.path(source) + "/" + video.relativePath)
            RC_ASSERT(std::none_of(after.begin(), after.end(), [&](const VideoFile& still) {
                return still.size == video.size && naive::isSameName(still.fileName, video.fileName);
            }));
    }
    if (!done.failed && areAllReviewed)
        RC_ASSERT(after.size() <= missing.size() - expected.copied.size());
}

/// Found by the property above: a copy goes into a linked folder of the disk, but no analysis follows links.
TEST(EngineModelLinkedFolder, receivesACopyThatAnAnalysisStillMisses)
{
    const TemporaryFolder place;
    place.file("card/DCIM/x.mov", "video");
    place.folder("elsewhere");
    place.folder("disk");
    std::filesystem::create_directory_symlink("../elsewhere", (place / "disk/DCIM").path());
    const auto missing = [&] {
        return VideoSyncService::missingVideos(scan({(place / "card").path()}), scan({(place / "disk").path()}));
    };
    ASSERT_EQ(missing().size(), 1U);
    const EngineCopy done = copy(missing(), (place / "card").path(), (place / "disk").path(), true);
    EXPECT_EQ(done.summary.copiedCount, 1);
    EXPECT_EQ(contentOf(place / "elsewhere/x.mov"), "video");
    EXPECT_EQ(missing().size(), 1U);
    EXPECT_EQ(copy(missing(), (place / "card").path(), (place / "disk").path(), true).summary.skippedCount, 1);
}

RC_GTEST_FIXTURE_PROP(EngineModel, skipsOrFailsAtTheSameForbiddenFolders, ())
{
    const FileTree tree(anyTree(rc::gen::element(-1, 0000, 0111, 0222, 0333, 0444, 0555, 0666)));
    const Texts places = placesOf(anyRoots(), tree);

    const std::string outcome = runUnprivileged([&] {
        std::string text;
        try {
            text = "found\n" + textOf(plain(scan(places)));
        } catch (const FileError& error) {
            text = std::string("failed ") + error.what();
        }
        return text;
    });

    const auto expected = naive::scan(places, false);
    const bool isFailed = outcome.compare(0, 7, "failed ") == 0;
    RC_ASSERT(isFailed == !expected.has_value());
    if (expected)
        RC_ASSERT(outcome == "found\n" + textOf(*expected));
}

// --- Properties of the order

/// Parts of nearly equal names.
rc::Gen<std::string> nearNames()
{
    const auto pieces = rc::gen::element<std::string>("a", "A", "b", "1", "01", "2", "10", "0", ".", "/", " ", "_", "-",
                                                      "\u00e9", "e\u0301", "\u00c9", "\u00f1", "n\u0303", "\xff",
                                                      "\xc3", "\u65e5", "\u0661", "ss", "\u00df", "\u212a", "k", "");
    return rc::gen::map(rc::gen::resize(5, rc::gen::container<Texts>(pieces)), [](const Texts& parts) {
        std::string name;
        for (const std::string& part : parts)
            name += part;
        return name;
    });
}

VideoFile record(const std::string& name, const std::string& path)
{
    return {.id = path, .url = {}, .relativePath = path, .fileName = name, .size = 1, .createdAt = std::nullopt};
}

/// By the engine's only operation that orders, which leaves the first of two where it is unless the other precedes it.
bool isBefore(const VideoFile& one, const VideoFile& other)
{
    return VideoSyncService::missingVideos({other, one}, {})[0] == one && !(one == other);
}

RC_GTEST_FIXTURE_PROP(EngineModel, ordersStrictlyAndWeakly, ())
{
    speak(*rc::gen::element<std::string>("es_ES", "en_US", "sv_SE", "lt_LT", "C"));
    const std::string shared = *nearNames();
    std::vector<VideoFile> three;
    for (int i = 0; i < 3; ++i)
        three.push_back(record(*rc::gen::oneOf(nearNames(), rc::gen::just(shared)), *nearNames()));
    const auto& [a, b, c] = std::tie(three[0], three[1], three[2]);

    RC_ASSERT(!isBefore(a, a));
    RC_ASSERT(!(isBefore(a, b) && isBefore(b, a)));
    RC_ASSERT(!(isBefore(a, b) && isBefore(b, c)) || isBefore(a, c));
    const auto areLevel = [](const VideoFile& one, const VideoFile& other) {
        return !isBefore(one, other) && !isBefore(other, one);
    };
    RC_ASSERT(!(areLevel(a, b) && areLevel(b, c)) || areLevel(a, c));
    RC_ASSERT(areLevel(a, b) == (a.fileName == b.fileName && a.relativePath == b.relativePath));
    const std::string collation = language == "C" ? "" : language;
    if (a.fileName != b.fileName)
        RC_ASSERT(isBefore(a, b) == naive::isBefore(a.fileName, b.fileName, collation));
    else
        RC_ASSERT(isBefore(a, b) == naive::isBefore(a.relativePath, b.relativePath, collation));
}

RC_GTEST_FIXTURE_PROP(EngineModel, takesNamesForEqualAsTheModel, ())
{
    const std::string one = *nearNames();
    const std::string other = *nearNames();
    const bool isFound = VideoSyncService::missingVideos({record(one, "1")}, {record(other, "2")}).empty();
    RC_ASSERT(isFound == naive::isSameName(one, other));
}

} // namespace
} // namespace reelkeep
