// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Why a copy did not come to be. Nothing of it is left then.
enum class CopyFault {
    None,
    SourceGone, // or it may not be read
    SourceChanged, // while it was copied
    NoFile, // the source is a folder, a pipe, a device
    SameFile, // what has the name is the source
    NameTaken,
    FolderThere, // a folder has the name
    NameTooLong,
    NameInvalid, // there, or anywhere
    NoSpace,
    ReadOnly, // or it may not be written to
    TooLarge, // for a file on that file system
    DestinationGone,
    Failed, // anything else
};

// What an error number of writing into a folder means.
[[nodiscard]] CopyFault faultOfWriting(int error);
// The same for the step that gives the copy its name.
[[nodiscard]] CopyFault faultOfNaming(int error);
