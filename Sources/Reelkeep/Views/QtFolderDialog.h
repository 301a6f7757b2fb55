#pragma once

#include "FolderDialog.h"

namespace reelkeep {

/// Makes the toolkit's own folder dialog: the same on every desktop, able to choose several folders, and read-only,
/// because it may show the only copy of someone's footage.
FolderDialogFactory qtFolderDialogs();

} // namespace reelkeep
