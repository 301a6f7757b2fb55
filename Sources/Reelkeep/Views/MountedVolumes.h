#pragma once

#include <QList>
#include <QString>

#include <chrono>

namespace reelkeep {

/// A mounted disk, card, share or device.
struct Volume {
    QString path;
    QString label;       ///< May be empty.
    bool isCard = false; ///< A memory card, a camera or a phone.
};

/// Volumes mounted under /media, /run/media or /mnt, and gvfs devices. A query to a dead share or a hanging disk may
/// block for ever, so each runs on a thread of its own, and a volume that has not answered within `patience` is left
/// out.
QList<Volume> answeringVolumes(std::chrono::milliseconds patience);

/// Whether a folder exists and its disk confirms that within `patience`.
bool isAnsweringFolder(const QString& folder, std::chrono::milliseconds patience);

} // namespace reelkeep
