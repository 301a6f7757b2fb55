#include "Text/SharedText.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace reelkeep {
namespace {

TEST(SharedText, holdsAnyBytes)
{
    const std::string bytes("a\0\xff/\n", 5);
    EXPECT_EQ(SharedText(bytes), bytes);
    EXPECT_EQ(SharedText(bytes).size(), 5U);
    EXPECT_EQ(SharedText("x").back(), 'x');
}

TEST(SharedText, isEmptyWhenMadeOfNothing)
{
    EXPECT_TRUE(SharedText().empty());
    EXPECT_EQ(SharedText(), "");
    EXPECT_EQ(SharedText(""), SharedText());
    EXPECT_STREQ(SharedText().c_str(), "");
}

TEST(SharedText, sharesItsEnd)
{
    const SharedText path("/card/CLIP.MOV");
    const SharedText name = path.from(6);
    EXPECT_EQ(name, "CLIP.MOV");
    EXPECT_EQ(name.c_str(), path.c_str() + 6);
    EXPECT_EQ(path.from(14), "");
    EXPECT_EQ(path.from(100), "");
}

TEST(SharedText, keepsItsStorageAliveThroughAnyOfItsUsers)
{
    SharedText name;
    {
        const SharedText path("/card/CLIP.MOV");
        const SharedText copy = path;
        name = copy.from(6);
    }
    SharedText moved = std::move(name);
    EXPECT_EQ(moved, "CLIP.MOV");
    name = moved;
    moved = SharedText("other");
    EXPECT_EQ(name, "CLIP.MOV");
    const SharedText& itself = name;
    name = itself;
    EXPECT_EQ(name, "CLIP.MOV");
}

TEST(SharedText, isHashedByItsBytes)
{
    const std::hash<SharedText> hash;
    EXPECT_EQ(hash(SharedText("CLIP.MOV")), hash(SharedText("/card/CLIP.MOV").from(6)));
    EXPECT_NE(hash(SharedText("CLIP.MOV")), hash(SharedText("clip.mov")));
}

TEST(SharedTextArena, makesTextsOfAnyLengthThatStayValid)
{
    std::vector<std::string> expected;
    std::vector<SharedText> made;
    {
        SharedTextArena texts;
        for (std::size_t length = 0; length < 300; ++length) {
            const std::string folder(length * length, 'f');
            const std::string name(length, 'n');
            expected.push_back(folder + name);
            made.push_back(texts.joined(folder, name));
        }
    }
    for (std::size_t i = 0; i < made.size(); ++i) {
        EXPECT_EQ(made[i], expected[i]);
        EXPECT_EQ(made[i].c_str()[made[i].size()], '\0');
    }
}

TEST(SharedTextArena, makesTextsThatOtherThreadsMayReleaseMeanwhile)
{
    SharedTextArena texts;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        std::vector<SharedText> made(1000);
        for (SharedText& text : made)
            text = texts.joined("folder/", "name");
        threads.emplace_back([made = std::move(made)]() mutable {
            for (SharedText& text : made)
                text = text.from(7);
            made.clear();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(texts.joined("a", "b"), "ab");
}

} // namespace
} // namespace reelkeep
