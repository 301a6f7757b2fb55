#include "Text/TextOrder.h"

#include <unicode/ucol.h>
#include <unicode/uset.h>

#include <algorithm>
#include <cstddef>

namespace reelkeep {

namespace {

constexpr char firstPrintable = ' ';
constexpr char lastPrintable = '~';

/// In a table of all bytes.
std::size_t placeOf(char c)
{
    return static_cast<unsigned char>(c);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isCapital(char c)
{
    return c >= 'A' && c <= 'Z';
}

bool collatesBefore(const UCollator* collator, const std::string& one, const std::string& other)
{
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result = ucol_strcollUTF8(collator, one.data(), static_cast<std::int32_t>(one.size()),
                                                     other.data(), static_cast<std::int32_t>(other.size()), &status);
    return U_SUCCESS(status) && result == UCOL_LESS;
}

/// Whether the language has a rule of its own for ASCII, as for a Czech "ch". The order common to all has none.
bool hasRulesForAscii(const UCollator* collator)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<USet, decltype(&uset_close)> tailored(ucol_getTailoredSet(collator, &status), uset_close);
    bool found = U_FAILURE(status);
    for (std::int32_t i = 0; !found && i < uset_getItemCount(tailored.get()); ++i) {
        char16_t text[64];
        UChar32 first = 0;
        UChar32 last = 0;
        const std::int32_t length = uset_getItem(tailored.get(), i, &first, &last, text, 64, &status);
        if (length == 0) // a range of characters
            found = first < 128;
        else
            found = std::all_of(text, text + std::min(length, 64), [](char16_t c) { return c < 128; });
    }
    return found;
}

} // namespace

/// The table is asked of the collator, and taken only if it tells all there is: between two characters the letter case
/// differs, small letters first, or they differ in the first place, whatever follows them.
void FileBrowserOrder::rankAscii()
{
    if (hasRulesForAscii(collator.get()))
        return;
    std::string sorted;
    for (char c = firstPrintable; c <= lastPrintable; ++c)
        sorted += c;
    std::sort(sorted.begin(), sorted.end(), [&](char a, char b) { return collatesBefore(collator.get(), {a}, {b}); });

    std::array<unsigned char, 256> table = {};
    unsigned char rank = 2; // Below are the key's separators.
    table[placeOf(sorted[0])] = rank;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const std::string before(1, sorted[i - 1]);
        const std::string after(1, sorted[i]);
        const bool isCapitalOf = isCapital(sorted[i]) && sorted[i] + ('a' - 'A') == sorted[i - 1];
        if (isCapitalOf ? collatesBefore(collator.get(), before + "b", after + "a")
                        : !collatesBefore(collator.get(), before + "b", after + "a"))
            return;
        rank = static_cast<unsigned char>(rank + (isCapitalOf ? 0 : 1));
        table[placeOf(sorted[i])] = rank;
    }
    ranks = table;
}

bool FileBrowserOrder::isPlain(std::string_view text) const
{
    constexpr std::size_t longestNumber = 254; // The collator parts longer ones.
    std::size_t digits = 0;
    for (const char c : text) {
        digits = isDigit(c) ? digits + 1 : 0;
        if (ranks[placeOf(c)] == 0 || digits > longestNumber)
            return false;
    }
    return true;
}

/// As the collator's: first what the text says, then letter case, then the bytes. Returns where the key ends.
char* FileBrowserOrder::writePlainKey(char* key, std::string_view text) const
{
    const auto endOfNumber = [text](std::size_t at) {
        while (at < text.size() && isDigit(text[at]))
            ++at;
        return at;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        *key++ = static_cast<char>(ranks[placeOf(text[at])]);
        if (!isDigit(text[at]))
            continue;
        // A number: its length, which decides first, and its digits. All have one rank, so that it comes before any.
        key[-1] = static_cast<char>(ranks['0']);
        const std::size_t end = endOfNumber(at);
        while (at < end && text[at] == '0')
            ++at;
        *key++ = static_cast<char>(end - at + 1);
        key = std::copy(text.begin() + at, text.begin() + end, key);
        at = end - 1;
    }
    *key++ = '\1';
    for (std::size_t at = 0; at < text.size(); ++at) {
        *key++ = isCapital(text[at]) ? '\3' : '\2';
        if (isDigit(text[at]))
            at = endOfNumber(at) - 1;
    }
    *key++ = '\0';
    return std::copy(text.begin(), text.end(), key);
}

FileBrowserOrder::Keys FileBrowserOrder::sortKeys(const std::vector<std::string_view>& texts) const
{
    const bool arePlain = std::all_of(texts.begin(), texts.end(), [&](std::string_view text) { return isPlain(text); });
    Keys keys;
    keys.ends.reserve(texts.size());
    std::size_t length = 0;
    std::size_t longest = 0;
    for (const std::string_view text : texts) {
        length += 3 * text.size() + 2; // Hardly ever more.
        longest = std::max(longest, text.size());
    }
    keys.bytes.reserve(length);
    std::string key(arePlain ? 5 * longest + 2 : 0, '\0'); // A digit alone takes three, its letter case and itself one.
    for (const std::string_view text : texts) {
        if (arePlain)
            keys.bytes.append(key.data(), writePlainKey(key.data(), text));
        else
            keys.bytes += sortKey(text);
        keys.ends.push_back(keys.bytes.size());
    }
    return keys;
}

} // namespace reelkeep
