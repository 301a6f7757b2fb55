#include "Fixtures/RecordingFileManager.h"

#include "Files/FileError.h"
#include "Files/Stopped.h"

#include <utility>

namespace reelkeep {

std::vector<std::string> RecordingFileManager::calls() const
{
    const std::lock_guard guard(watch->mutex);
    return watch->calls;
}

void RecordingFileManager::failAt(std::size_t number, const FileError& error)
{
    const std::lock_guard guard(watch->mutex);
    watch->failures.insert_or_assign(number, error);
}

void RecordingFileManager::blockAt(std::size_t number)
{
    const std::lock_guard guard(watch->mutex);
    watch->blockedNumber = number;
}

void RecordingFileManager::waitUntilBlocked() const
{
    std::unique_lock lock(watch->mutex);
    watch->changed.wait(lock, [this] { return watch->isBlocked; });
}

void RecordingFileManager::release()
{
    const std::lock_guard guard(watch->mutex);
    watch->blockedNumber = 0;
    watch->changed.notify_all();
}

void RecordingFileManager::record(std::string call, const std::stop_token& stop) const
{
    std::unique_lock lock(watch->mutex);
    watch->calls.push_back(std::move(call));
    const std::size_t number = watch->calls.size();
    if (number == watch->blockedNumber) {
        watch->isBlocked = true;
        watch->changed.notify_all();
        watch->changed.wait(lock, stop, [&] { return watch->blockedNumber != number; });
        watch->isBlocked = false;
        if (stop.stop_requested())
            throw Stopped();
    }
    const auto failure = watch->failures.find(number);
    if (failure != watch->failures.end())
        throw FileError(failure->second);
}

void RecordingFileManager::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                        const std::stop_token& stop) const
{
    record("regularFiles " + root.path(), stop);
    LinuxFileManager::regularFiles(root, wanted, found, stop);
}

void RecordingFileManager::createDirectory(const Location& folder)
{
    record("createDirectory " + folder.path());
    LinuxFileManager::createDirectory(folder);
}

bool RecordingFileManager::fileExists(const Location& place) const
{
    record("fileExists " + place.path());
    return LinuxFileManager::fileExists(place);
}

std::unique_ptr<CopyRun> RecordingFileManager::beginCopying(const std::stop_token& stop)
{
    class Run : public CopyRun {
    public:
        Run(const RecordingFileManager& recorder, std::unique_ptr<CopyRun> realRun, std::stop_token stopToken)
            : files(recorder), real(std::move(realRun)), stop(std::move(stopToken))
        {
        }
        void completeCopiesTo(const Location& target) override
        {
            files.record("completeCopiesTo " + target.path(), stop);
            real->completeCopiesTo(target);
        }
        void copyItem(const Location& source, const Location& target) override
        {
            files.record("copyItem " + source.path() + " -> " + target.path(), stop);
            real->copyItem(source, target);
        }
        void readAhead(const Location& source) override
        {
            files.record("readAhead " + source.path(), stop);
            real->readAhead(source);
        }
        void finish() override
        {
            files.record("finish", stop);
            real->finish();
        }

    private:
        const RecordingFileManager& files;
        std::unique_ptr<CopyRun> real;
        std::stop_token stop;
    };
    return std::make_unique<Run>(*this, LinuxFileManager::beginCopying(stop), stop);
}

} // namespace reelkeep
