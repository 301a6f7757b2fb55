#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct UCollator;

namespace reelkeep {

/// Letters that are not ASCII are kept.
constexpr char asciiLowercased(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// `text` in lower case by Unicode rules, code point by code point, regardless of locale and context. Bytes that are
/// not UTF-8 are kept.
std::string lowercased(std::string_view text);

/// The text without its letter case, code point by code point: any two names that are the same on some disk become
/// equal, and a few more.
std::string caseless(std::string_view text);

/// The text by which two file names are the same name: lower case over the canonical composed form, so that a name
/// written decomposed by another system is the same name. Bytes that are not UTF-8 are kept, so that two different
/// damaged names never become one.
std::string foldedName(std::string_view name);

/// A hash of `foldedName`, computed without making that text if the name is ASCII.
std::uint64_t foldedHash(std::string_view name);

/// Whether two names have the same `foldedName`; makes no text if both are ASCII.
bool isSameName(std::string_view one, std::string_view other);

/// The name of the locale whose order the user wants: the first of LC_ALL, LC_COLLATE and LANG that is set.
std::string collationLocale();

/// The order in which a file browser lists names: runs of digits by their value, letter case only as a last resort.
/// Names that are still equal then (C1 and C01) are ordered by their bytes, so only equal names are equal.
/// One thread at a time.
class FileBrowserOrder {
public:
    /// Takes a locale's name as in the environment; C, POSIX, the empty name and unknown names mean the order common to
    /// all languages. Throws std::runtime_error if Unicode's tables are not installed.
    explicit FileBrowserOrder(std::string_view localeName);

    /// Bytes that compare as the texts do. Computed once per text, they make sorting fast, and the order transitive.
    std::string sortKey(std::string_view text) const;

    /// Writes the same bytes behind `keys`: with many texts, an allocation for each would take longer than sorting.
    void appendSortKey(std::string& keys, std::string_view text) const;

private:
    struct CloseCollator {
        void operator()(UCollator* open) const;
    };

    std::unique_ptr<UCollator, CloseCollator> collator;
};

} // namespace reelkeep
