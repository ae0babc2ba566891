#include "FileSystem/SystemError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tallyroom {

bool SystemError::isGone() const noexcept
{
    // ESRCH: the folder of a process that has ended
    return code == ENOENT || code == ENOTDIR || code == ELOOP || code == ESRCH;
}

std::string SystemError::message() const
{
    static constexpr std::array words{
        std::pair{SystemError::excluded, "Ce dossier est exclu des analyses."},
        std::pair{SystemError::otherFileSystem, "Ce dossier est sur un autre système de fichiers."},
        std::pair{EPERM, "Opération non permise."},
        std::pair{ENOENT, "Cet élément n'existe plus."},
        std::pair{EIO, "Le disque a signalé une erreur."},
        std::pair{ENOMEM, "La mémoire est pleine."},
        std::pair{EACCES, "Accès refusé."},
        std::pair{EBUSY, "Cet élément est utilisé par le système."},
        std::pair{EEXIST, "Un élément de ce nom existe déjà."},
        std::pair{EXDEV, "Cet élément est sur un autre volume."},
        std::pair{ENOTDIR, "Ce n'est pas un dossier."},
        std::pair{EISDIR, "C'est un dossier."},
        std::pair{EINVAL, "Le système n'accepte pas cette opération."},
        std::pair{EMFILE, "Trop de fichiers sont ouverts."},
        std::pair{ENFILE, "Trop de fichiers sont ouverts."},
        std::pair{ENOSPC, "Le volume est plein."},
        std::pair{EROFS, "Ce volume est en lecture seule."},
        std::pair{ENAMETOOLONG, "Le nom est trop long."},
        std::pair{ENOTEMPTY, "Le dossier n'est pas vide."},
        std::pair{ELOOP, "Trop de liens se suivent, ou un lien est à la place d'un dossier."},
        std::pair{ETXTBSY, "Ce programme est en cours d'exécution."},
        std::pair{EDQUOT, "Le quota de disque est atteint."},
        std::pair{ESTALE, "Ce dossier n'existe plus sur le serveur."},
        std::pair{ETIMEDOUT, "Le serveur ne répond pas."},
        std::pair{ENOTCONN, "Ce volume n'est plus connecté."},
        std::pair{EHOSTDOWN, "Le serveur ne répond pas."},
        std::pair{EHOSTUNREACH, "Le serveur n'est pas joignable."},
        std::pair{ENODEV, "Ce périphérique n'est plus là."},
        std::pair{ENXIO, "Ce périphérique n'est plus là."},
    };
    const auto found = std::ranges::find(words, code, &std::pair<int, const char*>::first);
    return found != words.end() ? found->second : std::generic_category().message(code);
}

SystemError SystemError::last() noexcept
{
    return {errno};
}

} // namespace tallyroom
