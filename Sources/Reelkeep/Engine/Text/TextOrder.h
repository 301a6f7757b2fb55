#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct UCollator;

namespace reelkeep {

/// `text` in lower case by Unicode rules, each code point for itself: neither the locale nor the place in the word
/// counts. Bytes that are not UTF-8 stay as they are.
std::string lowercased(std::string_view text);

/// What two file names must share to be the same name: lower case over the canonical composed form, so that a name
/// that another system wrote decomposed is the same name. Bytes that are not UTF-8 stay as they are, so that two
/// different damaged names never become one.
std::string foldedName(std::string_view name);

/// A number that is the same for names with the same `foldedName`, mostly without making that text.
std::uint64_t foldedHash(std::string_view name);

/// Whether two names have the same `foldedName`, mostly without making those texts.
bool isSameName(std::string_view one, std::string_view other);

/// The name of the locale whose order the user wants: the first of LC_ALL, LC_COLLATE and LANG that is set.
std::string collationLocale();

/// The order in which a file browser lists names: runs of digits by their value, letter case only as a last resort.
/// Names that are still equal then (C1 and C01) are ordered by their bytes, so only equal names are equal.
class FileBrowserOrder {
public:
    /// Takes a locale's name as in the environment; C, POSIX, the empty name and a name that is no locale's mean the
    /// order common to all languages. Throws std::runtime_error where Unicode's tables are not installed.
    explicit FileBrowserOrder(std::string_view localeName);

    /// Bytes that compare as the texts do. Computed once per text, they make sorting fast, and the order transitive.
    /// One thread at a time.
    std::string sortKey(std::string_view text) const;

    /// Keys of many texts in one storage: an allocation for each took longer than to sort them.
    struct Keys {
        std::string bytes;
        std::vector<std::size_t> ends; ///< Of each key in `bytes`.

        std::string_view operator[](std::size_t index) const
        {
            const std::size_t begin = index == 0 ? 0 : ends[index - 1];
            return std::string_view(bytes).substr(begin, ends[index] - begin);
        }
    };

    /// One key per text, to be compared with each other only. Where all texts are printable ASCII and the language has
    /// no rules of its own for it, the keys are made without Unicode's tables: the same order in less time.
    /// One thread at a time.
    Keys sortKeys(const std::vector<std::string_view>& texts) const;

private:
    struct CloseCollator {
        void operator()(UCollator* open) const;
    };
    void rankAscii();
    bool isPlain(std::string_view text) const;
    char* writePlainKey(char* key, std::string_view text) const;

    std::unique_ptr<UCollator, CloseCollator> collator;
    /// The place of each printable ASCII character, capitals with their small letters; 0 for all others, and for all
    /// where the language has rules for ASCII that no such table can tell.
    std::array<unsigned char, 256> ranks = {};
};

} // namespace reelkeep
