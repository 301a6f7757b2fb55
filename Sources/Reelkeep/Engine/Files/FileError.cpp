#include "Files/FileError.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace reelkeep {

FileError::FileError(std::string filePath, int errorNumber)
    : FileError(std::move(filePath), errorNumber, failureReason(errorNumber))
{
}

FileError::FileError(std::string filePath, int errorNumber, const std::string& reason)
    : std::runtime_error(filePath + ": " + reason + "."), failedPath(std::move(filePath)), number(errorNumber)
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
        return "es un enlace, no un archivo";
    case EBUSY:
        return "otro programa lo esta usando";
    case EMFILE:
    case ENFILE:
        return "hay demasiados archivos abiertos";
    case ENOMEM:
        return "no queda memoria";
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
        return std::error_code(errorNumber, std::generic_category()).message();
    }
}

FileError creationError(int folder, std::string path, int errorNumber)
{
    struct stat status = {};
    const bool mayBeTheName = errorNumber == ENOENT || errorNumber == EINVAL || errorNumber == EILSEQ;
    if (mayBeTheName && ::fstat(folder, &status) == 0 && status.st_nlink > 0)
        return {std::move(path), errorNumber, failureReason(EILSEQ)};
    return {std::move(path), errorNumber};
}

FileError readError(std::string path, int errorNumber, dev_t device)
{
    if (errorNumber == EIO && isDisconnected(device))
        return {std::move(path), ENODEV};
    if (errorNumber == EIO)
        return {std::move(path), EIO,
                "no se puede leer; comprueba que la tarjeta o el disco esta bien y sigue conectado"};
    return {std::move(path), errorNumber};
}

FileError writeError(std::string path, int errorNumber, dev_t device)
{
    if (errorNumber == EIO && isDisconnected(device))
        return {std::move(path), ENODEV};
    if (errorNumber == EIO)
        return {std::move(path), EIO, "no se puede escribir; comprueba que el disco esta bien y sigue conectado"};
    return {std::move(path), errorNumber};
}

bool isDisconnected(dev_t device)
{
    if (major(device) == 0) // not a disk of this machine's own
        return false;
    const std::string known = "/sys/dev/block";
    const std::string own = known + "/" + std::to_string(major(device)) + ":" + std::to_string(minor(device));
    return ::access(own.c_str(), F_OK) != 0 && errno == ENOENT && ::access(known.c_str(), F_OK) == 0;
}

} // namespace reelkeep
