#include "Model/SessionModel.h"

#include <algorithm>
#include <cctype>

namespace reelkeep {

namespace {

std::string joined(const std::string& folder, const std::string& relative)
{
    return folder == "/" ? folder + relative : folder + "/" + relative;
}

std::string lastComponent(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
}

/// The names here are ASCII.
std::string lower(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

std::string swappedCase(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::isupper(static_cast<unsigned char>(letter))
                                       ? std::tolower(static_cast<unsigned char>(letter))
                                       : std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

/// Case-insensitive, then lower case first: the file browser's order for names of ASCII letters and dots.
bool isBefore(const std::string& one, const std::string& other)
{
    return lower(one) != lower(other) ? lower(one) < lower(other) : swappedCase(one) < swappedCase(other);
}

std::vector<Video> missingOf(const std::vector<Video>& source, const std::vector<Video>& reviewed)
{
    std::vector<Video> missing;
    for (const Video& video : source) {
        bool isThere = false;
        for (const Video& other : reviewed)
            isThere = isThere || (lower(other.fileName) == lower(video.fileName) && other.size == video.size);
        if (!isThere)
            missing.push_back(video);
    }
    std::stable_sort(missing.begin(), missing.end(), [](const Video& a, const Video& b) {
        return a.fileName == b.fileName ? isBefore(a.relativePath, b.relativePath) : isBefore(a.fileName, b.fileName);
    });
    return missing;
}

/// Thrown through an operation whose session was destroyed on the way.
struct Gone {};

} // namespace

// --- The fields

void SessionModel::write(const std::function<void()>& store)
{
    announced.push_back(fields);
    if (announced.size() == fatalWrite) {
        destroy();
        throw Gone();
    }
    store();
}

void SessionModel::setStatus(const std::string& text)
{
    write([&] { fields.statusMessage = text; });
}

void SessionModel::destroy()
{
    alive = false;
    running.clear();
    posted.clear();
    fatalWrite = 0;
}

void SessionModel::begin()
{
    fields = {};
    alive = true;
}

// --- The choices

void SessionModel::chooseSourceFolder(const Answer& answer)
try {
    if (answer && !answer->empty())
        write([&] { fields.sourceFolder = answer->front(); });
} catch (const Gone&) {
}

void SessionModel::chooseCopyDestinationFolder(const Answer& answer)
try {
    if (!answer || answer->empty())
        return;
    write([&] { fields.copyDestinationFolder = answer->front(); });
    if (fields.destinationReviewFolders.empty())
        write([&] { fields.destinationReviewFolders = {answer->front()}; });
} catch (const Gone&) {
}

void SessionModel::addDestinationReviewFolders(const Answer& answer)
try {
    if (!answer || answer->empty())
        return;
    const Folders before = fields.destinationReviewFolders;
    Folders after = before;
    for (const std::string& folder : *answer) {
        if (std::count(before.begin(), before.end(), folder) == 0)
            after.push_back(folder);
    }
    write([&] { fields.destinationReviewFolders = after; });
} catch (const Gone&) {
}

void SessionModel::useOnlyCopyDestinationForReview()
try {
    if (fields.copyDestinationFolder)
        write([&] { fields.destinationReviewFolders = {*fields.copyDestinationFolder}; });
} catch (const Gone&) {
}

void SessionModel::removeDestinationReviewFolder(const std::string& folder)
try {
    Folders after;
    for (const std::string& present : fields.destinationReviewFolders) {
        if (present != folder)
            after.push_back(present);
    }
    write([&] { fields.destinationReviewFolders = after; });
} catch (const Gone&) {
}

void SessionModel::setCopyDestinationFolder(const std::optional<std::string>& folder)
try {
    write([&] { fields.copyDestinationFolder = folder; });
} catch (const Gone&) {
}

void SessionModel::setPreserveFolderStructure(bool preserve)
try {
    write([&] { fields.preserveFolderStructure = preserve; });
} catch (const Gone&) {
}

// --- The scan

void SessionModel::beginScan(bool endsACopy)
try {
    const bool lacksSource = !fields.sourceFolder;
    if (lacksSource || !fields.copyDestinationFolder) {
        setStatus(lacksSource ? "Selecciona primero la carpeta de origen."
                              : "Selecciona primero el HD o carpeta donde quieres copiar.");
        if (endsACopy)
            endCopy();
        return;
    }
    write([&] { fields.isScanning = true; });
    setStatus("Escaneando videos...");
    Run run;
    run.endsACopy = endsACopy;
    run.roots = derivedValuesOf(fields).effectiveDestinationReviewFolders;
    run.roots.insert(run.roots.begin(), *fields.sourceFolder);
    run.callInHand = "walk " + run.roots.front();
    running.push_back(run);
} catch (const Gone&) {
    if (endsACopy)
        throw;
}

std::vector<Video> SessionModel::videosBelow(const std::string& root) const
{
    std::vector<Video> videos;
    for (const auto& [path, size] : disk) {
        if (path.rfind(root + "/", 0) != 0)
            continue;
        const std::string name = lastComponent(path);
        const std::string extension = lower(name.substr(name.find('.') + 1));
        if (extension != "mov" && extension != "mp4")
            continue;
        std::string relative = path;
        for (auto at = relative.find(root + "/"); at != std::string::npos; at = relative.find(root + "/"))
            relative.erase(at, root.size() + 1);
        videos.push_back({path, relative, name, size});
    }
    return videos;
}

void SessionModel::postScan(Run& run)
{
    const std::vector<Video> source = run.found.front();
    std::vector<Video> reviewed;
    for (std::size_t i = 1; i < run.found.size(); ++i)
        reviewed.insert(reviewed.end(), run.found[i].begin(), run.found[i].end());
    const std::vector<Video> missing = missingOf(source, reviewed);
    run.callInHand.clear();
    post([this, source, reviewed, missing, endsACopy = run.endsACopy] {
        write([&] { fields.sourceVideos = source; });
        write([&] { fields.destinationVideos = reviewed; });
        write([&] { fields.missingVideos = missing; });
        write([&] { ++fields.scanDates; });
        setStatus(missing.empty() ? "Todo lo de la camara ya esta guardado en las ubicaciones revisadas. "
                                    "Los videos extra se ignoran."
                                  : "He encontrado " + std::to_string(missing.size()) +
                                        " videos de la camara que aun no estan en ninguna de las ubicaciones "
                                        "revisadas.");
        write([&] { fields.isScanning = false; });
        if (endsACopy)
            endCopy();
    });
}

// --- The copy

void SessionModel::copyMissingVideos()
try {
    if (!fields.sourceFolder)
        return setStatus("Selecciona primero la carpeta de origen.");
    if (!fields.copyDestinationFolder)
        return setStatus("Selecciona primero el HD o carpeta donde quieres copiar.");
    if (fields.missingVideos.empty())
        return setStatus("No hay videos pendientes para copiar.");
    write([&] { fields.isCopying = true; });
    write([&] { fields.progressValue = 0.0; });
    setStatus("Copiando al HD solo los videos que faltan de la camara...");
    Run run;
    run.isCopy = true;
    run.videos = fields.missingVideos;
    run.source = *fields.sourceFolder;
    run.destination = *fields.copyDestinationFolder;
    run.preservesStructure = fields.preserveFolderStructure;
    goOnCopying(run);
    running.push_back(run);
} catch (const Gone&) {
}

/// Up to the next file that is not there yet, or to the end.
void SessionModel::goOnCopying(Run& run)
{
    const std::size_t total = run.videos.size();
    for (;; ++run.handled) {
        const std::size_t done = run.handled;
        const Video& video = run.videos[std::min(done, total - 1)];
        post([this, done, total, name = video.fileName] {
            write([&] { fields.progressValue = static_cast<double>(done) / static_cast<double>(total); });
            setStatus("Copiando " + std::to_string(done) + "/" + std::to_string(total) + ": " + name);
        });
        if (done == total)
            break;
        const std::string target =
            joined(run.destination, run.preservesStructure ? video.relativePath : video.fileName);
        if (disk.count(target) == 0) {
            run.callInHand = "copy " + joined(run.source, video.relativePath) + " -> " + target;
            return;
        }
    }
    run.callInHand.clear();
    post([this, copied = run.copied, skipped = total - run.copied] {
        setStatus("Copia completada. " + std::to_string(copied) + " videos de la camara copiados al HD, " +
                  std::to_string(skipped) + " omitidos.");
        beginScan(true);
    });
}

void SessionModel::endCopy()
{
    write([&] { fields.isCopying = false; });
    write([&] { fields.progressValue = 0.0; });
}

// --- The workers

void SessionModel::postFailure(Run& run, const std::string& error)
{
    run.callInHand.clear();
    post([this, error, isCopy = run.isCopy, endsACopy = run.endsACopy] {
        setStatus((isCopy ? "No he podido copiar los videos: " : "No he podido escanear las carpetas: ") + error);
        if (!isCopy)
            write([&] { fields.isScanning = false; });
        if (isCopy || endsACopy)
            endCopy();
    });
}

void SessionModel::resume(Run& run, SteppedFiles::Going going)
{
    const std::string path = run.callInHand.substr(run.callInHand.find_last_of(' ') + 1);
    if (going == SteppedFiles::Going::intoDiskError)
        return postFailure(run, path + ": " + SteppedFiles::diskReason + ".");
    if (going == SteppedFiles::Going::intoOtherError)
        return postFailure(run, SteppedFiles::otherText);
    if (going == SteppedFiles::Going::outOfMemory)
        return postFailure(run, "No queda memoria.");
    if (!run.isCopy) {
        run.found.push_back(videosBelow(path));
        if (run.found.size() == run.roots.size())
            return postScan(run);
        run.callInHand = "walk " + run.roots[run.found.size()];
        return;
    }
    const std::string source = joined(run.source, run.videos[run.handled].relativePath);
    if (disk.count(source) == 0)
        return postFailure(run, source + ": no se encuentra.");
    disk[path] = disk.at(source);
    ++run.handled;
    ++run.copied;
    goOnCopying(run);
}

void SessionModel::serve()
try {
    while (!posted.empty()) {
        const std::function<void()> job = posted.front();
        posted.pop_front();
        job();
    }
} catch (const Gone&) {
}

} // namespace reelkeep
