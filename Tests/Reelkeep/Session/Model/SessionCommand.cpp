#include "Model/SessionCommand.h"

#include <map>
#include <ostream>
#include <string>

namespace reelkeep {

namespace {

const std::map<Deed, std::string> deedNames = {
    {Deed::resumeWorker, "resume"},
    {Deed::resumeAllWorkers, "resume all"},
    {Deed::serve, "serve"},
    {Deed::scan, "scan"},
    {Deed::analyse, "analyse to the end"},
    {Deed::copy, "copy"},
    {Deed::chooseSource, "choose source"},
    {Deed::chooseDestination, "choose destination"},
    {Deed::addReviewFolders, "add review folders"},
    {Deed::useOnlyCopyDestination, "use only the copy destination"},
    {Deed::removeReviewFolder, "remove review folder"},
    {Deed::pickDestination, "pick destination"},
    {Deed::pickNoDestination, "pick no destination"},
    {Deed::preserveFolders, "preserve folders"},
    {Deed::flattenFolders, "flatten folders"},
    {Deed::addFile, "add file"},
    {Deed::removeFile, "remove file"},
    {Deed::destroy, "destroy"},
};

} // namespace

void showValue(const Command& command, std::ostream& stream)
{
    stream << "{" << deedNames.at(command.deed) << ", target " << command.target << ", step " << command.step
           << ", reply " << int(command.reply) << ", meanwhile " << int(command.meanwhile) << ", going "
           << int(command.going) << ", size " << command.size << ", fatal write " << command.fatalWrite << "}";
}

rc::Gen<Command> commands()
{
    using Going = SteppedFiles::Going;
    // Repeated entries are likelier.
    const auto deeds = rc::gen::weightedElement<Deed>({
        {3, Deed::resumeWorker},
        {2, Deed::resumeAllWorkers},
        {2, Deed::serve},
        {1, Deed::scan},
        {1, Deed::analyse},
        {2, Deed::copy},
        {1, Deed::chooseSource},
        {1, Deed::chooseDestination},
        {1, Deed::addReviewFolders},
        {1, Deed::useOnlyCopyDestination},
        {1, Deed::removeReviewFolder},
        {1, Deed::pickDestination},
        {1, Deed::pickNoDestination},
        {1, Deed::preserveFolders},
        {1, Deed::flattenFolders},
        {1, Deed::addFile},
        {1, Deed::removeFile},
        {1, Deed::destroy},
    });
    const auto going = rc::gen::weightedElement<Going>(
        {{17, Going::well}, {1, Going::intoDiskError}, {1, Going::intoOtherError}, {1, Going::outOfMemory}});
    const auto reply =
        rc::gen::weightedElement<Reply>({{18, Reply::folders}, {1, Reply::noFolder}, {1, Reply::cancel}});
    const auto meanwhile = rc::gen::weightedElement<Meanwhile>(
        {{14, Meanwhile::nothing}, {5, Meanwhile::serving}, {1, Meanwhile::destruction}});
    const auto fatal = rc::gen::weightedOneOf<int>({{30, rc::gen::just(0)}, {1, rc::gen::inRange(1, 12)}});
    return rc::gen::build<Command>(
        rc::gen::set(&Command::deed, deeds), rc::gen::set(&Command::target, rc::gen::inRange(0, 20)),
        rc::gen::set(&Command::step, rc::gen::inRange(0, 20)), rc::gen::set(&Command::reply, reply),
        rc::gen::set(&Command::meanwhile, meanwhile), rc::gen::set(&Command::going, going),
        rc::gen::set(&Command::size, rc::gen::inRange(0, 3)), rc::gen::set(&Command::fatalWrite, fatal));
}

} // namespace reelkeep
