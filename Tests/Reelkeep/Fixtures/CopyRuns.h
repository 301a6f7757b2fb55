#pragma once

#include "Fixtures/TemporaryFolder.h"
#include "VideoSyncModels.h"

#include <cstddef>
#include <functional>
#include <stop_token>
#include <string>
#include <sys/stat.h>

namespace reelkeep {

/// Bytes that do not repeat; the same `seed` gives the same bytes.
std::string contentOfLength(std::size_t length, unsigned seed);
/// The result of `lstat`; throws FileError.
struct stat attributesOf(const Location& file);

/// Ten videos with names that every disk allows and sizes around those of blocks and chunks, and a file of another
/// kind.
void fillCard(const TemporaryFolder& card);

/// Analyses both and returns what `disk` lacks.
VideoList missing(const Location& card, const Location& disk);
/// Analyses both and copies what `disk` lacks.
CopySummary copyMissing(const Location& card, const Location& disk, const std::stop_token& stop = {});
/// Does the same and returns "none" or the text of the failure.
std::string failureOfCopy(const Location& card, const Location& disk);
/// Expects that every file on the disk has the content of its original on the card, and that no hidden file of ours is
/// left.
void expectOnlyWholeVideos(const Location& card, const Location& disk);

/// Whether the condition came true in time.
bool waitUntil(const std::function<bool()>& condition);

} // namespace reelkeep
