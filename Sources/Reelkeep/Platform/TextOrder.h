#pragma once

#include <memory>
#include <string>
#include <string_view>

struct UCollator;

namespace reelkeep {

/// `text` in lower case by Unicode rules, each code point for itself: neither the locale nor the place in the word
/// counts. Bytes that are not UTF-8 stay as they are.
std::string lowercased(std::string_view text);

/// What two file names must share to be the same name: lower case over the canonical composed form, so that a name
/// that another system wrote decomposed is the same name. Bytes that are not UTF-8 stay as they are, so that two
/// different damaged names never become one.
std::string foldedName(std::string_view name);

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

private:
    struct CloseCollator {
        void operator()(UCollator* open) const;
    };
    std::unique_ptr<UCollator, CloseCollator> collator;
};

} // namespace reelkeep
