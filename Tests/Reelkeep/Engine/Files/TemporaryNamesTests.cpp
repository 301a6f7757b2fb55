#include "Files/TemporaryNames.h"

#include <gtest/gtest.h>

#include <string>
#include <sys/vfs.h>

namespace reelkeep {
namespace {

TEST(TemporaryNames, fitTheFileSystemAndKeepCharactersWhole)
{
    struct statfs fileSystem = {};
    fileSystem.f_namelen = 143;
    std::string accented;
    while (accented.size() < 254)
        accented += "\u00e9";
    EXPECT_LE(growingName(accented, fileSystem).size(), 143U);
    EXPECT_LE(growingName(accented, {}).size(), 255U);
    for (const std::string& name : {growingName(accented, fileSystem), growingName(accented, {})})
        EXPECT_EQ(name.find(".reelkeep-copia") % 2, 1U); // the dot, then pairs of bytes
    EXPECT_EQ(growingName("x.mov", fileSystem), ".x.mov.reelkeep-copia");
    EXPECT_EQ(sealedName("x.mov", fileSystem), ".x.mov.reelkeep-lista");
}

} // namespace
} // namespace reelkeep
