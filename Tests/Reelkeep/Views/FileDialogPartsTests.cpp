#include "FileDialogParts.h"
#include "Fixtures/Widgets.h"

#include <QFileDialog>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

TEST(FileDialogParts, areAllFoundInThisVersionOfTheToolkit)
{
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    EXPECT_EQ(FileDialogParts(dialog).missing, QStringList());
}

} // namespace
} // namespace reelkeep
