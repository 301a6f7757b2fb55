#include "CopyJob.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/CopyRuns.h"
#include "VideoSyncService.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <set>
#include <string>

namespace reelkeep {
namespace {

/// Parts of names: usual ones, and characters that are easily mishandled.
rc::Gen<std::string> piece()
{
    return rc::gen::oneOf(rc::gen::elementOf(std::vector<std::string>{"-",
                                                                      " ",
                                                                      "\n",
                                                                      "\t",
                                                                      "\\",
                                                                      "%2",
                                                                      "%n",
                                                                      "*",
                                                                      "\"",
                                                                      "<b>",
                                                                      "e\xcc\x81",
                                                                      "\xc3\xa9",
                                                                      "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d",
                                                                      "\xe2\x80\xae",
                                                                      "\xf0\x9f\x8e\xac",
                                                                      "\xff",
                                                                      "\xc3",
                                                                      "\xed\xa0\x80",
                                                                      "ß",
                                                                      "İ",
                                                                      "ı",
                                                                      "Σ",
                                                                      "ς",
                                                                      ".mov",
                                                                      "..",
                                                                      "::",
                                                                      std::string(120, 'n')}),
                          rc::gen::container<std::string>(rc::gen::inRange<char>(1, 127)));
}

std::string joined(const std::vector<std::string>& pieces, std::size_t limit)
{
    std::string name;
    for (const std::string& part : pieces)
        name += part;
    std::replace(name.begin(), name.end(), '/', '_');
    return name.substr(0, limit);
}

/// A leading dot would hide the file.
std::string visible(std::string name)
{
    if (name.empty() || name[0] == '.')
        name.insert(name.begin(), '-');
    return name;
}

RC_GTEST_PROP(StrangeNames, surviveScanMatchCopyAndRescan, ())
{
    const TemporaryFolder card("/dev/shm");
    const TemporaryFolder disk("/dev/shm");
    const auto names = *rc::gen::container<std::vector<std::vector<std::string>>>(
        rc::gen::container<std::vector<std::string>>(piece()));
    std::set<std::string> made;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string folder = visible(joined(names[names.size() - 1 - i], 60)) + "d";
        const std::string name = visible(joined(names[i], 250)) + ".mov";
        const std::string path = i % 2 == 0 ? name : folder + "/" + name;
        if (made.insert(path).second)
            card.file(path, "content of " + std::to_string(i));
    }
    LinuxFileManager files;
    const VideoList found = VideoSyncService::scanVideoFiles(card.location(), files);
    RC_ASSERT(found.size() == made.size());
    for (const VideoFile& video : found)
        RC_ASSERT(made.count(video.relativePath) == 1U);

    copyMissing(card.location(), disk.location());
    RC_ASSERT(missing(card.location(), disk.location()).empty());
    for (const VideoFile& video : VideoSyncService::scanVideoFiles(disk.location(), files))
        RC_ASSERT(contentOf(video.url) == contentOf(card / video.relativePath));
    for (const std::string& path : everythingBelow(disk.location()))
        RC_ASSERT(path.find(".reelkeep-") == std::string::npos);
}

} // namespace
} // namespace reelkeep
