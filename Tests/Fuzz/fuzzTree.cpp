#include "Model/EngineRuns.h"
#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>

using namespace reelkeep;

namespace {

const std::vector<std::string> usual = {"a.mov",  "A.MOV",        "b.Mp4",  "C1.mts", "C01.mts",    "d",
                                        "e",      ".h.mov",       "P.app",  "x.txt",  ".d",         "a",
                                        cardPath, "$RECYCLE.BIN", "a.mov.", "AVCHD",  "\u00e9.mov", "e\u0301.mov"};
const std::vector<std::string> roots = {"card", "A", "card/d", "A/d", "link", "nowhere", "card/a.mov"};

/// A usual name, or bytes as they come.
std::string name(FuzzedDataProvider& input)
{
    if (input.ConsumeIntegralInRange(0, 3) != 0)
        return input.PickValueInArray({0, 1}) == 0
                   ? usual[input.ConsumeIntegralInRange<std::size_t>(0, 4)]
                   : usual[input.ConsumeIntegralInRange<std::size_t>(0, usual.size() - 1)];
    std::string bytes = input.ConsumeRandomLengthString(40);
    std::replace(bytes.begin(), bytes.end(), '/', '_');
    std::replace(bytes.begin(), bytes.end(), '\0', '0');
    const bool isReserved = bytes.empty() || bytes == "." || bytes == "..";
    return isReserved ? "n" : bytes + (input.ConsumeBool() ? ".mov" : "");
}

std::vector<TreeEntry> tree(FuzzedDataProvider& input)
{
    std::vector<TreeEntry> entries = {{.kind = TreeEntry::Kind::link, .path = {"link"}, .leadsTo = "card"}};
    for (int count = input.ConsumeIntegralInRange(0, 10); count > 0; --count) {
        TreeEntry entry;
        entry.kind = input.PickValueInArray({TreeEntry::Kind::file, TreeEntry::Kind::file, TreeEntry::Kind::file,
                                             TreeEntry::Kind::folder, TreeEntry::Kind::link, TreeEntry::Kind::pipe});
        entry.path.push_back(input.ConsumeBool() ? "card" : "A");
        for (int depth = input.ConsumeIntegralInRange(0, 3); depth >= 0; --depth)
            entry.path.push_back(name(input));
        entry.size = input.ConsumeIntegralInRange(0, 2);
        entry.leadsTo = input.ConsumeBool() ? "nowhere" : "..";
        entries.push_back(entry);
    }
    return entries;
}

std::string root(FuzzedDataProvider& input)
{
    return roots[input.ConsumeIntegralInRange<std::size_t>(0, roots.size() - 1)];
}

VideoList checkedScan(const std::vector<std::string>& places)
{
    const VideoList found = scan(places);
    require(textOf(plain(found)) == textOf(naive::scan(places, true).value()), "a scan finds what the model finds");
    return found;
}

} // namespace

/// Scans, matches and copies in a tree in memory, beside the model that does it in a twin of that tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ::setenv("LC_ALL", "es_ES.UTF-8", 1);
    FuzzedDataProvider input(data, size);
    const auto entries = tree(input);
    const std::string source = root(input);
    const std::string destination = input.ConsumeBool() ? "A" : root(input);
    const std::vector<std::string> reviewed = {root(input), destination};
    const bool preserves = input.ConsumeBool();

    const FileTree here(entries);
    const VideoList missing =
        VideoSyncService::missingVideos(checkedScan({here.path(source)}), checkedScan(placesOf(reviewed, here)));
    const FileTree twin(entries);
    const auto missingThere = naive::missing(naive::scan({twin.path(source)}, true).value(),
                                             naive::scan(placesOf(reviewed, twin), true).value(), "es_ES");
    require(missing.size() == missingThere.size(), "as much is missing as to the model");

    const EngineCopy done = copy(missing, here.path(source), here.path(destination), preserves);
    const naive::Copy expected = naive::copy(missingThere, twin.path(source), twin.path(destination), preserves);
    require(done.reports == expected.reports, "the reports are the model's");
    require(done.failed == expected.failed, "a run fails where the model's does");
    require(here.everything() == twin.everything(), "the disk holds the same afterwards");
    return 0;
}
