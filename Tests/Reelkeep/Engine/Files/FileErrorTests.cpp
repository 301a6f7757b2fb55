#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>

namespace reelkeep {
namespace {

struct Case {
    int errorNumber;
    const char* reason;
};

constexpr Case cases[] = {
    {ENOSPC, "no queda espacio en el disco"},
    {EDQUOT, "se ha agotado el espacio que te permite este disco"},
    {EFBIG, "el archivo es demasiado grande para este disco"},
    {EROFS, "el disco es de solo lectura"},
    {EACCES, "no tienes permiso"},
    {EPERM, "no tienes permiso"},
    {ENOENT, "no se encuentra"},
    {EILSEQ, "este disco no admite ese nombre"},
    {ENAMETOOLONG, "el nombre es demasiado largo"},
    {ENOTDIR, "hay un archivo donde hace falta una carpeta"},
    {EISDIR, "hay una carpeta donde hace falta un archivo"},
    {EEXIST, "ya existe"},
    {ELOOP, "hay enlaces que no llevan a ninguna parte"},
    {EBUSY, "otro programa lo esta usando"},
    {EMFILE, "hay demasiados archivos abiertos"},
    {ENFILE, "hay demasiados archivos abiertos"},
    {ENOMEM, "no queda memoria"},
    {EAGAIN, "otro programa lo tiene bloqueado"},
    {EUCLEAN, "el sistema de archivos del disco esta danado; hay que repararlo"},
    {EBADMSG, "el disco ha devuelto datos danados"},
    {ETIMEDOUT, "el disco no ha respondido a tiempo"},
    {EBADF, "el disco ha perdido el archivo abierto"},
    {EINVAL, "este disco no admite la operacion"},
    {ENOSYS, "este disco no admite la operacion"},
    {ENOTSUP, "este disco no admite la operacion"},
    {ENOLCK, "este disco no puede proteger el archivo de otros programas"},
    {ENETDOWN, "no se llega al disco por la red"},
    {ENETUNREACH, "no se llega al disco por la red"},
    {EHOSTUNREACH, "no se llega al disco por la red"},
    {ECONNREFUSED, "no se llega al disco por la red"},
    {ECONNRESET, "no se llega al disco por la red"},
    {ENOKEY, "el disco esta cifrado y sin desbloquear"},
    {EIO, "error de lectura o escritura; comprueba que el disco esta bien y sigue conectado"},
    {ENODEV, "el disco se ha desconectado"},
    {ENXIO, "el disco se ha desconectado"},
    {ENOTCONN, "el disco se ha desconectado"},
    {ESHUTDOWN, "el disco se ha desconectado"},
    {ENOMEDIUM, "el disco se ha desconectado"},
    {ECONNABORTED, "el disco se ha desconectado"},
    {EHOSTDOWN, "el disco se ha desconectado"},
    {ESTALE, "el disco se ha desconectado"},
};

TEST(FileError, givesPathAndReasonInTheUsersWords)
{
    for (const auto& [errorNumber, reason] : cases) {
        const FileError error("/media/disk/CLIP.MOV", errorNumber);
        EXPECT_EQ(error.what(), "/media/disk/CLIP.MOV: " + std::string(reason) + ".");
        EXPECT_EQ(error.path(), "/media/disk/CLIP.MOV");
        EXPECT_EQ(error.code(), errorNumber);
    }
}

TEST(FileError, isWrittenWithoutAccents)
{
    for (const auto& [errorNumber, reason] : cases) {
        const std::string text = FileError("/x", errorNumber).what();
        EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; }));
    }
}

TEST(FileError, givesTheSystemsTextForEveryOtherError)
{
    EXPECT_EQ(FileError("/x", ENOTTY).what(),
              "/x: error 25 del sistema (" + std::error_code(ENOTTY, std::generic_category()).message() + ").");
}

TEST(FileError, dropsTrailingSeparatorsOfThePath)
{
    EXPECT_STREQ(FileError("/card/DCIM/", EIO, "no se puede leer").what(), "/card/DCIM: no se puede leer.");
    EXPECT_EQ(FileError("/card/DCIM//", ENOENT).path(), "/card/DCIM");
    EXPECT_EQ(FileError("/", ENOENT).path(), "/");
}

TEST(FileError, acceptsAnyReason)
{
    EXPECT_STREQ(FileError("/x", 0, "ha cambiado durante la copia").what(), "/x: ha cambiado durante la copia.");
}

TEST(FileError, keepsThePathsBytes)
{
    EXPECT_STREQ(FileError("/\xff\n%2", ENOENT).what(), "/\xff\n%2: no se encuentra.");
}

class FileErrorCreation : public testing::Test {
protected:
    std::string textFor(int errorNumber)
    {
        const FileDescriptor folder(::open(parent.location().path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (removesFolder && ::rmdir(parent.location().path().c_str()) != 0)
            throw FileError(parent.location().path(), errno);
        return creationError(folder.get(), "/disk/A:B.MOV", errorNumber).what();
    }

    TemporaryFolder parent;
    bool removesFolder = false;
};

TEST_F(FileErrorCreation, blamesTheNameWhileTheFolderExists)
{
    for (const int errorNumber : {ENOENT, EINVAL, EILSEQ})
        EXPECT_EQ(textFor(errorNumber), "/disk/A:B.MOV: este disco no admite ese nombre.");
    EXPECT_EQ(textFor(ENOSPC), "/disk/A:B.MOV: no queda espacio en el disco.");
}

TEST_F(FileErrorCreation, reportsNotFoundOnceTheFolderIsGone)
{
    removesFolder = true;
    EXPECT_EQ(textFor(ENOENT), "/disk/A:B.MOV: no se encuentra.");
}

TEST(FileErrorReading, distinguishesADamagedDiskFromOneThatWasPulledOut)
{
    const dev_t network = makedev(0, 42);
    const dev_t gone = makedev(254, 1'000'000); // no such disk
    EXPECT_STREQ(readError("/card/x.mov", EIO, network).what(),
                 "/card/x.mov: no se puede leer; comprueba que la tarjeta o el disco esta bien y sigue conectado.");
    EXPECT_STREQ(readError("/card/x.mov", EIO, gone).what(), "/card/x.mov: el disco se ha desconectado.");
    EXPECT_STREQ(readError("/card/x.mov", ENOTCONN, network).what(), "/card/x.mov: el disco se ha desconectado.");
}

TEST(FileErrorReading, doesNotTakeADiskForPulledOutBecauseOfAnEarlierError)
{
    std::error_code failure;
    const std::filesystem::directory_iterator present("/sys/dev/block", failure);
    if (failure || present == std::filesystem::directory_iterator())
        GTEST_SKIP() << "SKIPPED: the machine reports no disks";
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    char colon = 0;
    std::istringstream(present->path().filename().string()) >> majorNumber >> colon >> minorNumber;
    errno = ENOENT;
    EXPECT_STREQ(readError("/card/x.mov", EIO, makedev(majorNumber, minorNumber)).what(),
                 "/card/x.mov: no se puede leer; comprueba que la tarjeta o el disco esta bien y sigue conectado.");
}

TEST(FileErrorWriting, distinguishesADamagedDiskFromOneThatWasPulledOut)
{
    const dev_t gone = makedev(254, 1'000'000);
    EXPECT_STREQ(writeError("/disk/x.mov", EIO, 0).what(),
                 "/disk/x.mov: no se puede escribir; comprueba que el disco esta bien y sigue conectado.");
    EXPECT_STREQ(writeError("/disk/x.mov", EIO, gone).what(), "/disk/x.mov: el disco se ha desconectado.");
    EXPECT_STREQ(writeError("/disk/x.mov", ENOSPC, gone).what(), "/disk/x.mov: no queda espacio en el disco.");
}

} // namespace
} // namespace reelkeep
