// SPDX-License-Identifier: MIT
// Starts the application.
#include "desk/windows/Application.h"

int main(int argc, char** argv) { return RunDesk(argc, argv); }
