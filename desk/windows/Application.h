// SPDX-License-Identifier: MIT
// Starting the application from its command line.
#pragma once

/// Runs the desk until its window is closed. The status for the process: 0, or 1 after one line on stderr.
int RunDesk(int argc, char** argv);
