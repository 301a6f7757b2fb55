#include "Fixtures/Widgets.h"
#include "StandardTexts.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

TEST(StandardTexts, areSpanishWithoutAccents)
{
    const StandardTexts texts;
    if (texts.isEmpty())
        GTEST_SKIP() << "the toolkit's translations are not installed";
    EXPECT_EQ(texts.translate("QFileSystemModel", "Date Modified", nullptr, -1), QStringLiteral("Ultima modificacion"));
    EXPECT_EQ(texts.translate("QFileSystemModel", "Size", nullptr, -1), QStringLiteral("Tamano"));
}

TEST(StandardTexts, leaveOtherTextsUntranslated)
{
    EXPECT_TRUE(StandardTexts().translate("reelkeep::ContentView", "Camara", nullptr, -1).isNull());
}

} // namespace
} // namespace reelkeep
