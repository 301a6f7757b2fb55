#include "Text/TextOrder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace reelkeep {
namespace {

using namespace std::string_literals;

TEST(TextOrderLowercased, foldsAsciiLettersAndNothingElse)
{
    EXPECT_EQ(lowercased("MVI_0001.Mov"), "mvi_0001.mov");
    EXPECT_EQ(lowercased("@[`{"), "@[`{");
    EXPECT_EQ(lowercased("ABCDEFGHIJKLMNOPQRSTUVWXYZ"), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(lowercased(""), "");
}

TEST(TextOrderLowercased, foldsLettersOfEveryScript)
{
    EXPECT_EQ(lowercased("CAMIÓN"), "camión");
    EXPECT_EQ(lowercased("ВИДЕО"), "видео");
    EXPECT_EQ(lowercased("\U00010400"), "\U00010428");
    EXPECT_EQ(lowercased("\u212A"), "k"); // The Kelvin sign.
}

TEST(TextOrderLowercased, doesNotDependOnThePositionInTheWord)
{
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδοσ");
}

TEST(TextOrderLowercased, keepsTheDotOfADottedCapitalI)
{
    EXPECT_EQ(lowercased("\u0130"), "i\u0307");
}

TEST(TextOrderLowercased, doesNotKnowTheTurkishLocale)
{
    setenv("LC_ALL", "tr_TR.UTF-8", 1);
    EXPECT_EQ(lowercased("AVI"), "avi");
    EXPECT_EQ(foldedName("CLIP.AVI"), "clip.avi");
    unsetenv("LC_ALL");
}

TEST(TextOrderLowercased, distinguishesSharpS)
{
    EXPECT_EQ(lowercased("\u1E9E"), "ß");
    EXPECT_NE(foldedName("straße"), foldedName("strasse"));
}

TEST(TextOrderFoldedName, isTheSameForComposedAndDecomposedForms)
{
    EXPECT_EQ(foldedName("Nin\u0303o.MOV"), "niño.mov");
    EXPECT_EQ(foldedName("NI\u00D1O.mov"), "niño.mov");
    EXPECT_EQ(foldedName("\u1112\u1161\u11AB"), "\uD55C");
}

TEST(TextOrderFoldedName, ordersMarksAsTheComposedFormDoes)
{
    EXPECT_EQ(foldedName("q\u0307\u0323"), foldedName("Q\u0323\u0307"));
}

TEST(TextOrderFoldedName, handlesLettersThatAreComposedInOneCaseOnly)
{
    EXPECT_EQ(foldedName("J\u030C"), "\u01F0");
    EXPECT_EQ(foldedName("\u01F0"), "\u01F0");
    EXPECT_EQ(foldedName("\u0130"), foldedName("I\u0307"));
    EXPECT_NE(foldedName("\u0130"), foldedName("i"));
}

TEST(TextOrderFoldedName, distinguishesCompatibleButDifferentLetters)
{
    EXPECT_NE(foldedName("\uFB01lm.mov"), foldedName("film.mov")); // The ligature fi.
}

TEST(TextOrderFoldedName, keepsBytesThatAreNotUtf8)
{
    EXPECT_EQ(foldedName("CLIP\xFF.MOV"), "clip\xFF.mov");
    EXPECT_NE(foldedName("CLIP\xFF.MOV"), foldedName("CLIP\xFE.MOV"));
    EXPECT_NE(foldedName("CLIP\xFF.MOV"), foldedName("CLIP\uFFFD.MOV"));
    EXPECT_EQ(foldedName("A\xC3"), "a\xC3");                               // Cut short.
    EXPECT_EQ(foldedName("\xC0\x81\xED\xA0\x80"), "\xC0\x81\xED\xA0\x80"); // Overlong; half of a surrogate pair.
}

TEST(TextOrderFoldedName, foldsTheValidTextAroundBytesThatAreNotUtf8)
{
    EXPECT_EQ(foldedName("NIN\u0303O\xFFN\u0303"), "niño\xFFñ");
}

RC_GTEST_PROP(TextOrderFoldedName, isItsOwnFoldedName, (const std::string& bytes))
{
    RC_ASSERT(foldedName(foldedName(bytes)) == foldedName(bytes));
}

TEST(TextOrderFoldedName, isItsOwnFoldedNameForEveryLetter)
{
    for (char32_t letter = 0x80; letter < 0x20000; ++letter) {
        if (letter >= 0xD800 && letter < 0xE000)
            continue;
        std::string name;
        if (letter < 0x800) {
            name += static_cast<char>(0xC0 | (letter >> 6));
        } else if (letter < 0x10000) {
            name += static_cast<char>(0xE0 | (letter >> 12));
            name += static_cast<char>(0x80 | ((letter >> 6) & 0x3F));
        } else {
            name += static_cast<char>(0xF0 | (letter >> 18));
            name += static_cast<char>(0x80 | ((letter >> 12) & 0x3F));
            name += static_cast<char>(0x80 | ((letter >> 6) & 0x3F));
        }
        name += static_cast<char>(0x80 | (letter & 0x3F));
        ASSERT_EQ(foldedName(foldedName(name)), foldedName(name)) << std::hex << static_cast<unsigned>(letter);
    }
}

TEST(TextOrderCollationLocale, isTheFirstThatIsSet)
{
    unsetenv("LC_ALL");
    unsetenv("LC_COLLATE");
    unsetenv("LANG");
    EXPECT_EQ(collationLocale(), "");
    setenv("LANG", "es_ES.UTF-8", 1);
    EXPECT_EQ(collationLocale(), "es_ES.UTF-8");
    setenv("LC_COLLATE", "sv_SE.UTF-8", 1);
    EXPECT_EQ(collationLocale(), "sv_SE.UTF-8");
    setenv("LC_ALL", "", 1); // An empty value counts as not set.
    EXPECT_EQ(collationLocale(), "sv_SE.UTF-8");
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(collationLocale(), "C");
    unsetenv("LC_ALL");
    unsetenv("LC_COLLATE");
    unsetenv("LANG");
}

/// The names in the order of the locale, whatever the order in which they are given.
std::vector<std::string> sorted(const char* locale, std::vector<std::string> names)
{
    const FileBrowserOrder order(locale);
    std::sort(names.begin(), names.end(),
              [&](const std::string& a, const std::string& b) { return order.sortKey(a) < order.sortKey(b); });
    return names;
}

using Names = std::vector<std::string>;

class TextOrderFileBrowserOrderIn : public testing::TestWithParam<const char*> {};

TEST_P(TextOrderFileBrowserOrderIn, comparesRunsOfDigitsByValue)
{
    EXPECT_EQ(sorted(GetParam(), {"C10.MP4", "C2.MP4", "C1.MP4"}), (Names{"C1.MP4", "C2.MP4", "C10.MP4"}));
    EXPECT_EQ(sorted(GetParam(), {"100CANON/B", "99CANON/A"}), (Names{"99CANON/A", "100CANON/B"}));
    EXPECT_EQ(sorted(GetParam(), {"x20231231235959999", "x3"}), (Names{"x3", "x20231231235959999"}));
}

TEST_P(TextOrderFileBrowserOrderIn, comparesLetterCaseLast)
{
    EXPECT_EQ(sorted(GetParam(), {"b.mov", "C.mov", "A.mov"}), (Names{"A.mov", "b.mov", "C.mov"}));
    EXPECT_EQ(sorted(GetParam(), {"CLIP2.mov", "clip10.mov", "clip1.mov"}),
              (Names{"clip1.mov", "CLIP2.mov", "clip10.mov"}));
}

TEST_P(TextOrderFileBrowserOrderIn, letsTheBytesDecideBetweenNamesThatCollateAsEqual)
{
    EXPECT_EQ(sorted(GetParam(), {"C1.MP4", "C01.MP4", "C001.MP4"}), (Names{"C001.MP4", "C01.MP4", "C1.MP4"}));
    EXPECT_EQ(sorted(GetParam(), {"\u00F1", "n\u0303"}), (Names{"n\u0303", "\u00F1"}));
    EXPECT_EQ(sorted(GetParam(), {"\u212B", "\u00C5"}), (Names{"\u00C5", "\u212B"})); // two letters of Unicode for one
    EXPECT_EQ(sorted(GetParam(), {"a\xFF", "a\xFE"}), (Names{"a\xFE", "a\xFF"}));
}

INSTANTIATE_TEST_SUITE_P(everyLocale, TextOrderFileBrowserOrderIn,
                         testing::Values("", "C", "POSIX", "C.UTF-8", "es_ES.UTF-8", "en_US", "de_DE@euro",
                                         "ja_JP.UTF-8", "no such locale"));

TEST(TextOrderFileBrowserOrder, followsTheLanguage)
{
    EXPECT_EQ(sorted("es_ES.UTF-8", {"ña", "nz", "o"}), (Names{"nz", "ña", "o"}));
    EXPECT_EQ(sorted("C", {"nz", "ña", "o"}), (Names{"ña", "nz", "o"}));
    EXPECT_EQ(sorted("sv_SE.UTF-8", {"ö", "z"}), (Names{"z", "ö"}));
    EXPECT_EQ(sorted("de_DE.UTF-8", {"z", "ö"}), (Names{"ö", "z"}));
}

TEST(TextOrderFileBrowserOrder, hasAKeyForNamesOfAnyLength)
{
    const FileBrowserOrder order("C");
    const std::string longName(4000, 'x');
    EXPECT_LT(order.sortKey(longName + "1"), order.sortKey(longName + "2"));
    EXPECT_LT(order.sortKey(""), order.sortKey("a"));
    std::string mixed;
    for (int i = 0; i < 500; ++i)
        mixed += "\u4E00\u0301Aa";
    EXPECT_NE(order.sortKey(mixed), order.sortKey(mixed + "a"));
}

RC_GTEST_PROP(TextOrderFileBrowserOrder, isEqualOnlyForEqualBytes, (const std::string& a, const std::string& b))
{
    const FileBrowserOrder order("es_ES.UTF-8");
    RC_ASSERT((order.sortKey(a) == order.sortKey(b)) == (a == b));
}

RC_GTEST_PROP(TextOrderFileBrowserOrder, followsTheNumber, ())
{
    const auto a = *rc::gen::inRange(0, 100'000);
    const auto b = *rc::gen::inRange(0, 100'000);
    const FileBrowserOrder order("");
    const auto key = [&](int number) { return order.sortKey("MVI_" + std::to_string(number) + ".MOV"); };
    RC_ASSERT((key(a) < key(b)) == (a < b));
}

TEST(TextOrderFileBrowserOrder, hasKeysForNumbersOfAnyLength)
{
    const FileBrowserOrder order("C");
    for (const std::size_t digits : {1U, 253U, 254U, 255U, 600U}) {
        const std::string number(digits, '7');
        EXPECT_LT(order.sortKey("0" + number), order.sortKey(number)) << digits;
        EXPECT_LT(order.sortKey(number), order.sortKey(number + "1")) << digits;
        EXPECT_LT(order.sortKey(number + "1"), order.sortKey("a")) << digits;
    }
}

TEST(TextOrderFoldedName, isOneForBothCasesOfEveryAsciiLetter)
{
    for (const char* letters : {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", "aBcDeFgHiJkLmNoPqRsTuVwXyZ"}) {
        EXPECT_EQ(foldedName(letters), "abcdefghijklmnopqrstuvwxyz");
        EXPECT_TRUE(isSameName(letters, "abcdefghijklmnopqrstuvwxyz"));
        EXPECT_EQ(foldedHash(letters), foldedHash("abcdefghijklmnopqrstuvwxyz"));
    }
}

TEST(TextOrderFoldedName, canBeAsciiThoughTheNameIsNot)
{
    EXPECT_EQ(foldedName("\u212Aino.MOV"), "kino.mov"); // the sign for kelvin
    EXPECT_TRUE(isSameName("\u212Aino.MOV", "kino.mov"));
    EXPECT_TRUE(isSameName("kino.mov", "\u212Aino.MOV"));
    EXPECT_EQ(foldedHash("\u212Aino.MOV"), foldedHash("kino.mov"));
}

RC_GTEST_PROP(TextOrderFoldedName, decidesHashAndComparison, (const std::string& one, const std::string& other))
{
    RC_ASSERT(isSameName(one, other) == (foldedName(one) == foldedName(other)));
    const std::string folded = foldedName(one);
    RC_ASSERT(isSameName(one, one) && isSameName(one, folded) == (foldedName(folded) == folded));
    RC_ASSERT(foldedHash(one) == foldedHash(folded) || foldedName(folded) != folded);
}

TEST(TextOrderCaseless, isEqualForAllNamesThatDisksTreatAsTheSame)
{
    EXPECT_EQ(caseless("MVI_0001.MOV"), caseless("mvi_0001.mov"));
    EXPECT_EQ(caseless("CAMIÓN"), caseless("camión"));
    // Their capitals are the same.
    EXPECT_EQ(caseless("ς"), caseless("σ"));
    EXPECT_EQ(caseless("\u0131"), caseless("i"));
    EXPECT_EQ(caseless("\u017F"), caseless("s"));
    EXPECT_EQ(caseless("\u212A"), caseless("k"));
    EXPECT_NE(caseless("CAMIÓN"), caseless("CAMION"));
    EXPECT_NE(caseless("\xff\xfeÓ"), caseless("\xfeÓ"));
}

} // namespace
} // namespace reelkeep
