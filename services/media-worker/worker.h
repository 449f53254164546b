// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Called with each file before it is read. The shipped program has none; the tests' worker misbehaves here.
using WorkerHook = void (*)(int descriptor);

// kestrel-media-worker --plugins DIR [--bubblewrap]     answers requests on descriptor 3 until it is closed
// kestrel-media-worker --plugins DIR --write-registry   writes DIR/registry.bin for the plug-ins in
// DIR/plugins
int runWorker(int argc, char **argv, WorkerHook hook);
