#pragma once

#include <QList>
#include <QString>

#include <chrono>

namespace reelkeep {

/// A disk, card, share or device in the tree of folders.
struct Volume {
    QString place;
    QString label; ///< What its owner calls it; empty where nobody does.
};

/// What is mounted where desktops and people put what is no part of the system. Whoever asks a dead share or a hanging
/// disk anything waits for ever, so each is asked on a thread of its own, and one that has not answered within
/// `patience` is left out.
QList<Volume> answeringVolumes(std::chrono::milliseconds patience);

/// Whether a folder is there and says so within `patience`.
bool isAnsweringFolder(const QString& folder, std::chrono::milliseconds patience);

} // namespace reelkeep
