// SPDX-License-Identifier: GPL-3.0-or-later
#include "copyfault.h"

#include <cerrno>

CopyFault faultOfWriting(int error)
{
    switch (error) {
    case 0:
        return CopyFault::None;
    case ENOSPC:
    case EDQUOT:
        return CopyFault::NoSpace;
    case EROFS:
    case EACCES:
    case EPERM:
        return CopyFault::ReadOnly;
    case EFBIG:
    case EOVERFLOW:
        return CopyFault::TooLarge;
    case ENAMETOOLONG:
        return CopyFault::NameTooLong;
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
    case ESTALE:
        return CopyFault::DestinationGone;
    default:
        return CopyFault::Failed;
    }
}

CopyFault faultOfNaming(int error)
{
    switch (error) {
    case EEXIST:
    case ENOTEMPTY:
        return CopyFault::NameTaken;
    case EISDIR:
        return CopyFault::FolderThere;
    case EINVAL: // "a:b?" on a card, for example
    case EILSEQ:
        return CopyFault::NameInvalid;
    default:
        return faultOfWriting(error);
    }
}
