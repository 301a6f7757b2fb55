#pragma once

#include "FolderDialog.h"

namespace reelkeep {

/// Makes the toolkit's own folder dialog: the same on every desktop, able to choose several folders, and read-only, for
/// what it shows may be the only copy of somebody's footage.
FolderDialogFactory qtFolderDialogs();

} // namespace reelkeep
