#include "Text/TextOrder.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace reelkeep {

namespace {

constexpr UChar32 capitalIWithDot = 0x130;
constexpr UChar32 replacementCharacter = 0xFFFD;

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string inAsciiLowercase(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
        c = asciiLowercased(c);
    return result;
}

/// FNV-1a of the text with ASCII letters lower-cased, and whether it is pure ASCII, in the same pass (called for every
/// name).
struct AsciiFoldedHash {
    std::uint64_t hash = 0xcbf29ce484222325;
    bool isOfAscii = true;

    explicit AsciiFoldedHash(std::string_view text)
    {
        unsigned char bits = 0;
        for (const char c : text) {
            hash = (hash ^ static_cast<unsigned char>(asciiLowercased(c))) * 0x100000001b3;
            bits |= static_cast<unsigned char>(c);
        }
        isOfAscii = bits < 0x80;
    }
};

void check(UErrorCode status)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("Unicode: ") + u_errorName(status));
}

std::int32_t lengthOf(std::string_view text)
{
    return static_cast<std::int32_t>(text.size());
}

/// A code point with its bytes; the code point is negative for bytes that are not UTF-8.
struct Piece {
    UChar32 codePoint;
    std::string_view bytes;
};

Piece firstPiece(std::string_view text)
{
    Piece piece = {};
    std::int32_t length = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // Inside ICU's macro.
    U8_NEXT(text.data(), length, lengthOf(text), piece.codePoint);
#pragma GCC diagnostic pop
    piece.bytes = text.substr(0, static_cast<std::size_t>(length));
    return piece;
}

void append(std::string& text, UChar32 codePoint)
{
    char bytes[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, codePoint);
    text.append(bytes, static_cast<std::size_t>(length));
}

/// Bytes that are not UTF-8 become replacement characters.
std::u16string utf16(std::string_view text)
{
    std::u16string result(text.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(result.data(), static_cast<std::int32_t>(result.size()), &length, text.data(), lengthOf(text),
                         replacementCharacter, nullptr, &status);
    check(status);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::string utf8(const std::u16string& text)
{
    std::string result(3 * text.size(), '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(result.data(), static_cast<std::int32_t>(result.size()), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &status);
    check(status);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

/// The composed form of a text that is UTF-8 throughout.
std::string composedRun(std::string_view run)
{
    if (isAscii(run))
        return std::string(run);
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* composer = unorm2_getNFCInstance(&status);
    check(status);
    const std::u16string source = utf16(run);
    std::u16string result(3 * source.size(), u'\0'); // No text grows by more than three times when it is composed.
    const std::int32_t length = unorm2_normalize(composer, source.data(), static_cast<std::int32_t>(source.size()),
                                                 result.data(), static_cast<std::int32_t>(result.size()), &status);
    check(status);
    result.resize(static_cast<std::size_t>(length));
    return utf8(result);
}

/// The composed form, run by run between the bytes that are not UTF-8.
std::string composed(std::string_view text)
{
    std::string result;
    std::size_t runLength = 0;
    while (runLength < text.size()) {
        const Piece piece = firstPiece(text.substr(runLength));
        if (piece.codePoint >= 0) {
            runLength += piece.bytes.size();
            continue;
        }
        result += composedRun(text.substr(0, runLength));
        result += piece.bytes;
        text.remove_prefix(runLength + piece.bytes.size());
        runLength = 0;
    }
    return result += composedRun(text);
}

/// Appends what `appendCase` makes of each code point; bytes that are not UTF-8 are kept.
template <typename AppendCase>
std::string inOneCase(std::string_view text, AppendCase appendCase)
{
    if (isAscii(text))
        return inAsciiLowercase(text);
    std::string result;
    while (!text.empty()) {
        const Piece piece = firstPiece(text);
        if (piece.codePoint < 0)
            result += piece.bytes;
        else
            appendCase(result, piece.codePoint);
        text.remove_prefix(piece.bytes.size());
    }
    return result;
}

} // namespace

std::string lowercased(std::string_view text)
{
    return inOneCase(text, [](std::string& result, UChar32 codePoint) {
        if (codePoint == capitalIWithDot)
            result += "i\u0307"; // The one letter whose lower case is two code points; "i" alone is another name.
        else
            append(result, u_tolower(codePoint));
    });
}

/// Through upper case, which disks compare: some letters have the same upper case but different lower cases.
std::string caseless(std::string_view text)
{
    return inOneCase(text, [](std::string& result, UChar32 codePoint) {
        append(result, u_foldCase(u_toupper(codePoint), U_FOLD_CASE_DEFAULT));
    });
}

std::string foldedName(std::string_view name)
{
    if (isAscii(name)) // Like nearly every name given by a camera.
        return inAsciiLowercase(name);
    // Composed once more at the end: some letters have a composed form in one letter case only.
    return composed(lowercased(composed(name)));
}

std::uint64_t foldedHash(std::string_view name)
{
    const AsciiFoldedHash folded(name);
    return folded.isOfAscii ? folded.hash : AsciiFoldedHash(foldedName(name)).hash;
}

bool isSameName(std::string_view one, std::string_view other)
{
    if (isAscii(one) && isAscii(other))
        return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                          [](char a, char b) { return asciiLowercased(a) == asciiLowercased(b); });
    return foldedName(one) == foldedName(other);
}

std::string collationLocale()
{
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && *value)
            return value;
    }
    return {};
}

void FileBrowserOrder::CloseCollator::operator()(UCollator* open) const
{
    ucol_close(open);
}

FileBrowserOrder::FileBrowserOrder(std::string_view localeName)
{
    const std::string language(localeName.substr(0, localeName.find_first_of(".@")));
    UErrorCode status = U_ZERO_ERROR;
    collator.reset(ucol_open(language.c_str(), &status));
    if (U_FAILURE(status)) { // The environment may hold anything; an unknown locale must not fail a scan.
        status = U_ZERO_ERROR;
        collator.reset(ucol_open("", &status));
        check(status);
    }
    ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_TERTIARY, &status);
    ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &status); // Names may be decomposed.
    check(status);
}

std::string FileBrowserOrder::sortKey(std::string_view text) const
{
    std::string key;
    appendSortKey(key, text);
    return key;
}

void FileBrowserOrder::appendSortKey(std::string& keys, std::string_view text) const
{
    constexpr std::size_t usualLength = 256;
    const std::u16string source = utf16(text);
    const std::size_t begin = keys.size();
    const auto append = [&](std::size_t room) {
        keys.resize(begin + room);
        const std::int32_t length =
            ucol_getSortKey(collator.get(), source.data(), static_cast<std::int32_t>(source.size()),
                            reinterpret_cast<std::uint8_t*>(keys.data() + begin), static_cast<std::int32_t>(room));
        return static_cast<std::size_t>(length);
    };
    std::size_t length = append(usualLength);
    if (length > usualLength)
        length = append(length);
    keys.resize(begin + length);
    // The collator's key ends with its only zero byte, so the text counts only between texts that collate as equal.
    keys += text;
}

} // namespace reelkeep
