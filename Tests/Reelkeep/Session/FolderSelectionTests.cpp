#include "Fixtures/SessionTest.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

using Dialogs = std::vector<ScriptedFolderDialogs::Shown>;

class FolderSelection : public SessionTest {};

TEST_F(FolderSelection, choosesTheSourceInADialogForOneFolder)
{
    chooseSource("/card");
    EXPECT_EQ(dialogs.shown, Dialogs{ScriptedFolderDialogs::forOneFolder("Selecciona la carpeta de origen")});
}

TEST_F(FolderSelection, choosesTheDestinationInADialogForOneFolder)
{
    chooseDestination("/A");
    EXPECT_EQ(dialogs.shown, Dialogs{ScriptedFolderDialogs::forOneFolder("Selecciona la carpeta de destino")});
}

TEST_F(FolderSelection, choosesReviewFoldersInADialogForSeveral)
{
    addReviewFolders({"/A"});
    EXPECT_EQ(dialogs.shown,
              Dialogs{ScriptedFolderDialogs::forSeveralFolders("Selecciona uno o varios HDs o carpetas a revisar")});
}

TEST_F(FolderSelection, makesANewDialogForEachChoiceAndKeepsNone)
{
    int openMeanwhile = 0;
    for (int i = 0; i < 2; ++i) {
        dialogs.answers.push_back({.response = FolderDialog::Response::ok,
                                   .chosen = locations({"/card"}),
                                   .whileOpen = [&] { openMeanwhile += dialogs.openCount; }});
        session->chooseSourceFolder();
        EXPECT_EQ(dialogs.openCount, 0);
    }
    EXPECT_EQ(openMeanwhile, 2);
}

TEST_F(FolderSelection, setsOnlyTheSource)
{
    const AnnouncementRecorder recorder(*session);
    chooseSource("/card");
    chooseSource("/other");
    EXPECT_EQ(recorder.writes(), (Lines{"sourceFolder = /card", "sourceFolder = /other"}));
}

TEST_F(FolderSelection, reviewsTheFirstDestination)
{
    const AnnouncementRecorder recorder(*session);
    chooseDestination("/A");
    EXPECT_EQ(recorder.writes(), (Lines{"copyDestinationFolder = /A", "destinationReviewFolders = [/A]"}));
}

TEST_F(FolderSelection, keepsReviewingThePreviousDestination)
{
    chooseDestination("/A");
    const AnnouncementRecorder recorder(*session);
    chooseDestination("/B");
    EXPECT_EQ(recorder.writes(), (Lines{"copyDestinationFolder = /B"}));
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/A"}));
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/B", "/A"}));
}

TEST_F(FolderSelection, addsReviewFoldersAtTheEndAsOneChange)
{
    addReviewFolders({"/B"});
    const AnnouncementRecorder recorder(*session);
    addReviewFolders({"/D", "/B", "/C"});
    EXPECT_EQ(recorder.writes(), (Lines{"destinationReviewFolders = [/B, /D, /C]"}));
}

TEST_F(FolderSelection, announcesOnceIfNoAddedFolderIsNew)
{
    addReviewFolders({"/Volumes/B"});
    const AnnouncementRecorder recorder(*session);
    addReviewFolders({"/Volumes/B"});
    EXPECT_EQ(recorder.writes(), (Lines{"nothing"}));
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/Volumes/B"}));
}

TEST_F(FolderSelection, doesNotCompareTheAddedFoldersWithEachOther)
{
    addReviewFolders({"/B", "/B"});
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/B", "/B"}));
}

TEST_F(FolderSelection, addsTheDestinationToo)
{
    chooseDestination("/A");
    session->removeDestinationReviewFolder(Location("/A"));
    addReviewFolders({"/B", "/A"});
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/B", "/A"}));
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/A", "/B"}));
}

TEST_F(FolderSelection, comparesAddedFoldersByTheirPathsOnly)
{
    addReviewFolders({"/Volumes/B"});
    addReviewFolders({"/volumes/b", "/Volumes/B/"});
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/Volumes/B", "/volumes/b"}));
}

TEST_F(FolderSelection, changesNothingWhenADialogIsCancelled)
{
    const AnnouncementRecorder recorder(*session);
    willCancel();
    session->chooseSourceFolder();
    willCancel();
    session->chooseCopyDestinationFolder();
    willCancel();
    session->addDestinationReviewFolders();
    EXPECT_EQ(recorder.writes(), Lines{});
    EXPECT_EQ(dialogs.shown.size(), 3U);
}

TEST_F(FolderSelection, changesNothingWhenADialogReportsNoFolder)
{
    const AnnouncementRecorder recorder(*session);
    willChoose({});
    session->chooseSourceFolder();
    willChoose({});
    session->chooseCopyDestinationFolder();
    willChoose({});
    session->addDestinationReviewFolders();
    EXPECT_EQ(recorder.writes(), Lines{});
}

TEST_F(FolderSelection, reducesTheReviewToTheDestination)
{
    chooseDestination("/A");
    addReviewFolders({"/B", "/C"});
    const AnnouncementRecorder recorder(*session);
    session->useOnlyCopyDestinationForReview();
    session->useOnlyCopyDestinationForReview();
    EXPECT_EQ(recorder.writes(), (Lines{"destinationReviewFolders = [/A]", "nothing"}));
}

TEST_F(FolderSelection, doesNotReduceTheReviewWithoutADestination)
{
    addReviewFolders({"/B", "/C"});
    const AnnouncementRecorder recorder(*session);
    session->useOnlyCopyDestinationForReview();
    EXPECT_EQ(recorder.writes(), Lines{});
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/B", "/C"}));
}

TEST_F(FolderSelection, removesEveryEntryOfAFolderAsOneChange)
{
    addReviewFolders({"/B", "/A", "/B", "/C"});
    const AnnouncementRecorder recorder(*session);
    session->removeDestinationReviewFolder(Location("/B"));
    EXPECT_EQ(recorder.writes(), (Lines{"destinationReviewFolders = [/A, /C]"}));
    session->removeDestinationReviewFolder(Location("/not there"));
    EXPECT_EQ(recorder.count(), 2U);
}

TEST_F(FolderSelection, removesAFolderGivenByAReferenceIntoTheList)
{
    addReviewFolders({"/A", "/B", "/A"});
    session->removeDestinationReviewFolder(session->destinationReviewFolders().front());
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/B"}));
}

TEST_F(FolderSelection, goesOnReviewingADestinationThatWasRemoved)
{
    chooseDestination("/A");
    addReviewFolders({"/B"});
    session->removeDestinationReviewFolder(Location("/A"));
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/B"}));
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/A", "/B"}));
}

TEST_F(FolderSelection, acceptsAnyFolderForAnyChoice)
{
    chooseSource("/card");
    chooseDestination("/card");
    addReviewFolders({"/card/DCIM", "/missing"});
    EXPECT_EQ(session->copyDestinationFolder(), session->sourceFolder());
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/card", "/card/DCIM", "/missing"}));
}

TEST_F(FolderSelection, keepsTheResultsOfThePreviousScan)
{
    files->add("/card/a.mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    const Snapshot before = snapshot(*session);
    chooseSource("/other card");
    chooseDestination("/B");
    addReviewFolders({"/C"});
    session->removeDestinationReviewFolder(Location("/A"));
    session->useOnlyCopyDestinationForReview();
    const Snapshot after = snapshot(*session);
    for (std::size_t field = 3; field < after.size(); ++field) // The first three are the choices.
        EXPECT_EQ(after[field], before[field]);
    EXPECT_TRUE(session->canCopy());
}

TEST_F(FolderSelection, receivesResultsWhileADialogIsOpen)
{
    files->add("/card/a.mov");
    chooseSource("/card");
    chooseDestination("/A");
    session->scanFolders();
    dialogs.answers.push_back({.response = FolderDialog::Response::ok, .chosen = locations({"/B"}), .whileOpen = [&] {
                                   EXPECT_TRUE(becomesIdle());
                               }});
    session->addDestinationReviewFolders();
    EXPECT_EQ(session->missingVideos().size(), 1U);
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/A", "/B"}));
}

TEST_F(FolderSelection, survivesTheEndOfTheSessionWhileADialogIsOpen)
{
    using Operation = void (VideoSyncViewModel::*)();
    for (const Operation operation :
         {&VideoSyncViewModel::chooseSourceFolder, &VideoSyncViewModel::chooseCopyDestinationFolder,
          &VideoSyncViewModel::addDestinationReviewFolders}) {
        session = std::make_unique<VideoSyncViewModel>(dialogs.factory(), files);
        dialogs.answers.push_back({.response = FolderDialog::Response::ok,
                                   .chosen = locations({"/A"}),
                                   .whileOpen = [&] { session.reset(); }});
        (session.get()->*operation)();
        EXPECT_EQ(session, nullptr);
    }
}

TEST_F(FolderSelection, survivesASlotThatDestroysTheSession)
{
    willChoose({"/A"});
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, [&] { session.reset(); });
    session->chooseCopyDestinationFolder();
    EXPECT_EQ(session, nullptr);
}

} // namespace
} // namespace reelkeep
