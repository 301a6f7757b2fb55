#include "Model/NaiveEngine.h"
#include "Require.h"
#include "Text/TextOrder.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace reelkeep;

namespace {

void compareFolding(const std::string& one, const std::string& other)
{
    const std::string folded = foldedName(one);
    require(foldedName(folded) == folded, "a folded name is its own folded name");
    require(isSameName(one, folded), "a name and its folded name are the same");
    require(foldedHash(one) == foldedHash(folded), "the same names have one hash");
    const bool isSame = isSameName(one, other);
    require(isSame == (folded == foldedName(other)), "the same names have one folded name");
    require(isSame == naive::isSameName(one, other), "the same names are the same to the model");
    require(!isSame || foldedHash(one) == foldedHash(other), "the same names have the same hash");
    require(foldedName(lowercased(one)) == foldedName(one), "letter case does not count");
}

void compareOrder(const std::string& one, const std::string& other, const FileBrowserOrder& order, const char* language)
{
    const std::string key = order.sortKey(one);
    const std::string otherKey = order.sortKey(other);
    require((key == otherKey) == (one == other), "only equal names are equal");
    require((key < otherKey) == naive::isBefore(one, other, language), "the order is the collator's");
}

} // namespace

/// The first byte chooses the language; the first line end parts two names.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const FileBrowserOrder spanish("es_ES");
    static const FileBrowserOrder common("C");
    static const FileBrowserOrder czech("cs_CZ");
    if (size == 0 || size > 600)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto end = text.find('\n');
    const std::string one = text.substr(0, end);
    const std::string other = end == std::string::npos ? std::string() : text.substr(end + 1);

    compareFolding(one, other);
    switch (data[0] % 3) {
    case 0:
        compareOrder(one, other, spanish, "es_ES");
        break;
    case 1:
        compareOrder(one, other, common, "");
        break;
    default:
        compareOrder(one, other, czech, "cs_CZ");
    }
    return 0;
}
