#pragma once

#include "Model/SteppedFiles.h"

#include <rapidcheck.h>

#include <iosfwd>

namespace reelkeep {

/// What the user, a worker, the interface thread or the world does next.
enum class Deed {
    resumeWorker,
    resumeAllWorkers,
    serve,
    scan,
    analyse, ///< A scan to its end.
    copy,
    chooseSource,
    chooseDestination,
    addReviewFolders,
    useOnlyCopyDestination,
    removeReviewFolder,
    pickDestination,
    pickNoDestination,
    preserveFolders,
    flattenFolders,
    addFile,
    removeFile,
    destroy
};

/// How the user leaves a folder dialog, and what goes on while it is open.
enum class Reply { folders, noFolder, cancel };
enum class Meanwhile { nothing, serving, destruction };

struct Command {
    Deed deed = Deed::serve;
    int target = 0; ///< Which worker, folder or file, modulo their number.
    int step = 0;   ///< The distance between the folders that are chosen in a dialog.
    Reply reply = Reply::folders;
    Meanwhile meanwhile = Meanwhile::nothing;
    SteppedFiles::Going going = SteppedFiles::Going::well;
    int size = 0;       ///< Of a new file.
    int fatalWrite = 0; ///< See SessionModel::destroyAt.
};

/// How a failure prints a command.
void showValue(const Command& command, std::ostream& stream);

rc::Gen<Command> commands();

} // namespace reelkeep
