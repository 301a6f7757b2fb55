#include "Model/NaiveEngine.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

#include <strings.h>
#include <sys/stat.h>

#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace reelkeep::naive {

namespace fs = std::filesystem;

namespace {

// --- Names

/// Code points, and negative numbers for bytes that are not UTF-8.
using Letters = std::vector<std::int32_t>;

/// The length of the character at `at`, and the character; 1 and a negative number if there is none.
std::pair<std::size_t, std::int32_t> letterAt(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return {1, static_cast<std::int32_t>(first)};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    std::int32_t letter = static_cast<std::int32_t>(first & (0x7FU >> length));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U)
            return {1, -static_cast<std::int32_t>(first)};
        letter = letter * 64 + static_cast<std::int32_t>(byte(i) & 0x3FU);
    }
    const std::int32_t least = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (first < 0xC0 || letter < least || letter > 0x10FFFF || (letter >= 0xD800 && letter < 0xE000))
        return {1, -static_cast<std::int32_t>(first)};
    return {length, letter};
}

Letters lettersOf(const std::string& text)
{
    Letters letters;
    for (std::size_t at = 0; at < text.size();) {
        const auto [length, letter] = letterAt(text, at);
        letters.push_back(letter);
        at += letter < 0 ? 1 : length;
    }
    return letters;
}

Letters lower(const Letters& letters)
{
    Letters result;
    for (const std::int32_t letter : letters) {
        if (letter == 0x130)
            result.insert(result.end(), {'i', 0x307});
        else
            result.push_back(letter < 0 ? letter : u_tolower(letter));
    }
    return result;
}

/// The composed form; runs between bytes that are not UTF-8 are composed separately.
Letters composed(const Letters& letters)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* composer = icu::Normalizer2::getNFCInstance(status);
    Letters result;
    icu::UnicodeString run;
    const auto flush = [&] {
        const icu::UnicodeString normal = composer->normalize(run, status);
        for (std::int32_t i = 0; i < normal.length(); i = normal.moveIndex32(i, 1))
            result.push_back(normal.char32At(i));
        run.remove();
    };
    for (const std::int32_t letter : letters) {
        if (letter >= 0) {
            run.append(letter);
            continue;
        }
        flush();
        result.push_back(letter);
    }
    flush();
    return result;
}

bool isHidden(const std::string& name)
{
    return name[0] == '.' || ::strcasecmp(name.c_str(), "$RECYCLE.BIN") == 0 ||
           ::strcasecmp(name.c_str(), "System Volume Information") == 0;
}

std::string extensionOf(const std::string& name)
{
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

bool isPackage(const std::string& name)
{
    for (const char* extension :
         {"app", "bundle", "framework", "plugin", "kext", "photoslibrary", "aplibrary", "imovielibrary", "fcpbundle",
          "tvlibrary", "musiclibrary", "theater", "logicx", "band"})
        if (::strcasecmp(extensionOf(name).c_str(), extension) == 0)
            return true;
    return false;
}

bool isVideo(const std::string& name)
{
    for (const char* extension : {"avi", "braw", "m4v", "mkv", "mov", "mp4", "mpeg", "mpg", "mts", "mxf", "r3d", "wmv"})
        if (lower(lettersOf(extensionOf(name))) == lettersOf(extension))
            return true;
    return false;
}

// --- The walk

bool isAllowed(const std::string& path, mode_t what, bool isPrivileged)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && (isPrivileged || (status.st_mode & what) != 0);
}

std::string withoutOccurrences(const std::string& text, const std::string& part)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, part.size(), part) == 0)
            at += part.size();
        else
            result += text[at++];
    }
    return result;
}

/// False if the scan fails.
bool walk(const std::string& folder, const std::string& root, bool isPrivileged, std::vector<Video>& found)
{
    if (!isAllowed(folder, S_IROTH, isPrivileged))
        return true;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        const std::string path = folder + "/" + name;
        if (isHidden(name))
            continue;
        if (!isAllowed(folder, S_IXOTH, isPrivileged))
            return false;
        struct stat status = {};
        ::lstat(path.c_str(), &status);
        if (S_ISDIR(status.st_mode) && !isPackage(name) && !walk(path, root, isPrivileged, found))
            return false;
        if (S_ISREG(status.st_mode) && isVideo(name))
            found.push_back({path, withoutOccurrences(path, root + "/"), name, status.st_size,
                             status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec});
    }
    return true;
}

} // namespace

std::optional<std::vector<Video>> scan(const std::vector<std::string>& roots, bool isPrivileged)
{
    std::vector<Video> found;
    for (const std::string& root : roots) {
        std::error_code forbidden;
        if (fs::is_directory(root, forbidden) && !walk(root, root, isPrivileged, found))
            return std::nullopt;
    }
    return found;
}

// --- Matching and order

bool isSameName(const std::string& one, const std::string& other)
{
    const auto key = [](const std::string& name) { return composed(lower(composed(lettersOf(name)))); };
    return key(one) == key(other);
}

bool isBefore(const std::string& one, const std::string& other, const std::string& language)
{
    static std::map<std::string, std::unique_ptr<icu::Collator>> collators; // Opening one takes long.
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator>& collator = collators[language];
    if (!collator) {
        collator.reset(icu::Collator::createInstance(icu::Locale(language.c_str()), status));
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    }
    // Not the collator's own comparison: in a language that changes the order, it takes digits of other scripts for
    // letters behind a common beginning.
    const auto key = [&](const std::string& text) {
        const icu::UnicodeString letters = icu::UnicodeString::fromUTF8(text);
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(collator->getSortKey(letters, nullptr, 0)));
        collator->getSortKey(letters, bytes.data(), static_cast<std::int32_t>(bytes.size()));
        return bytes;
    };
    return std::pair(key(one), one) < std::pair(key(other), other);
}

std::vector<Video> missing(const std::vector<Video>& source, const std::vector<Video>& reviewed,
                           const std::string& language)
{
    std::vector<Video> sorted;
    for (const Video& video : source) {
        bool isThere = false;
        for (const Video& other : reviewed)
            isThere = isThere || (other.size == video.size && isSameName(other.fileName, video.fileName));
        if (isThere)
            continue;
        // After all that it does not precede.
        auto place = sorted.end();
        while (place != sorted.begin()) {
            const Video& previous = *std::prev(place);
            const bool comesBefore = video.fileName == previous.fileName
                                         ? isBefore(video.relativePath, previous.relativePath, language)
                                         : isBefore(video.fileName, previous.fileName, language);
            if (!comesBefore)
                break;
            --place;
        }
        sorted.insert(place, video);
    }
    return sorted;
}

// --- Copying

Copy copy(const std::vector<Video>& videos, const std::string& source, const std::string& destination,
          bool preservesStructure)
{
    Copy result;
    const std::string total = std::to_string(videos.size());
    for (const Video& video : videos) {
        const std::string target = destination + "/" + (preservesStructure ? video.relativePath : video.fileName);
        const std::string original = source + "/" + video.relativePath;
        result.reports.push_back(std::to_string(result.copied.size() + result.skipped.size()) + "/" + total + " " +
                                 video.fileName);
        std::error_code failure;
        fs::create_directories(target.substr(0, target.find_last_of('/')), failure);
        if (failure || !fs::is_directory(target.substr(0, target.find_last_of('/')))) {
            result.failed = true;
            return result;
        }
        if (fs::symlink_status(target, failure).type() != fs::file_type::not_found) {
            result.skipped.push_back(video);
            continue;
        }
        if (fs::symlink_status(original, failure).type() != fs::file_type::regular ||
            !fs::copy_file(original, target, failure)) {
            result.failed = true;
            return result;
        }
        result.copied.push_back(video);
    }
    result.reports.push_back(total + "/" + total + " " + (videos.empty() ? "" : videos.back().fileName));
    return result;
}

} // namespace reelkeep::naive
