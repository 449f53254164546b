// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/workerprotocol.h"
#include "picture.h"
#include "replywriter.h"

// The work on one file.
namespace Inspection {

struct Result
{
    WorkerProtocol::Status status = WorkerProtocol::Ok;
    ReplyWriter fields;
    Picture picture;
};

[[nodiscard]] Result inspect(int descriptor, const WorkerProtocol::Request &request);

} // namespace Inspection
