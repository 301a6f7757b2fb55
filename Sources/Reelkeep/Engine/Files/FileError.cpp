#include "Files/FileError.h"

#include "Files/Location.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>

namespace reelkeep {

FileError::FileError(const std::string& filePath, int errorNumber)
    : FileError(filePath, errorNumber, failureReason(errorNumber))
{
}

FileError::FileError(const std::string& filePath, int errorNumber, const std::string& reason)
    : std::runtime_error(Location(filePath).path() + ": " + reason + "."), failedPath(Location(filePath).path()),
      number(errorNumber)
{
}

std::string failureReason(int errorNumber)
{
    switch (errorNumber) {
    case ENOSPC:
        return "no queda espacio en el disco";
    case EDQUOT:
        return "se ha agotado el espacio que te permite este disco";
    case EFBIG:
        return "el archivo es demasiado grande para este disco";
    case EROFS:
        return "el disco es de solo lectura";
    case EACCES:
    case EPERM:
        return "no tienes permiso";
    case ENOENT:
        return "no se encuentra";
    case EILSEQ:
        return "este disco no admite ese nombre";
    case ENAMETOOLONG:
        return "el nombre es demasiado largo";
    case ENOTDIR:
        return "hay un archivo donde hace falta una carpeta";
    case EISDIR:
        return "hay una carpeta donde hace falta un archivo";
    case EEXIST:
        return "ya existe";
    case ELOOP:
        return "hay enlaces que no llevan a ninguna parte";
    case EBUSY:
        return "otro programa lo esta usando";
    case EMFILE:
    case ENFILE:
        return "hay demasiados archivos abiertos";
    case ENOMEM:
        return "no queda memoria";
    case EAGAIN:
        return "otro programa lo tiene bloqueado";
    case EUCLEAN:
        return "el sistema de archivos del disco esta danado; hay que repararlo";
    case EBADMSG:
        return "el disco ha devuelto datos danados";
    case ETIMEDOUT:
        return "el disco no ha respondido a tiempo";
    case EBADF:
        return "el disco ha perdido el archivo abierto";
    case EINVAL:
    case ENOSYS:
    case ENOTSUP:
        return "este disco no admite la operacion";
    case ENOLCK:
        return "este disco no puede proteger el archivo de otros programas";
    case ENETDOWN:
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ECONNREFUSED:
    case ECONNRESET:
        return "no se llega al disco por la red";
    case ENOKEY:
        return "el disco esta cifrado y sin desbloquear";
    case EIO:
        return "error de lectura o escritura; comprueba que el disco esta bien y sigue conectado";
    case ENODEV:
    case ENXIO:
    case ENOTCONN:
    case ESHUTDOWN:
    case ENOMEDIUM:
    case ECONNABORTED:
    case EHOSTDOWN:
    case ESTALE:
        return "el disco se ha desconectado";
    default:
        return "error " + std::to_string(errorNumber) + " del sistema (" +
               std::error_code(errorNumber, std::generic_category()).message() + ")";
    }
}

FileError creationError(int folder, const std::string& path, int errorNumber)
{
    struct stat status = {};
    const bool mayBeTheName = errorNumber == ENOENT || errorNumber == EINVAL || errorNumber == EILSEQ;
    if (mayBeTheName && ::fstat(folder, &status) == 0 && status.st_nlink > 0)
        return {path, errorNumber, failureReason(EILSEQ)};
    return {path, errorNumber};
}

FileError readError(const std::string& path, int errorNumber, dev_t device)
{
    if (errorNumber == EIO && isDisconnected(device))
        return {path, ENODEV};
    if (errorNumber == EIO)
        return {path, EIO, "no se puede leer; comprueba que la tarjeta o el disco esta bien y sigue conectado"};
    return {path, errorNumber};
}

FileError writeError(const std::string& path, int errorNumber, dev_t device)
{
    if (errorNumber == EIO && isDisconnected(device))
        return {path, ENODEV};
    if (errorNumber == EIO)
        return {path, EIO, "no se puede escribir; comprueba que el disco esta bien y sigue conectado"};
    return {path, errorNumber};
}

bool isDisconnected(dev_t device)
{
    if (major(device) == 0) // not a block device of this machine
        return false;
    const std::string known = "/sys/dev/block";
    const std::string own = known + "/" + std::to_string(major(device)) + ":" + std::to_string(minor(device));
    return ::access(own.c_str(), F_OK) != 0 && errno == ENOENT && ::access(known.c_str(), F_OK) == 0;
}

} // namespace reelkeep
