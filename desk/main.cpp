// SPDX-License-Identifier: MIT
// Starts the application.
int main() { return 0; }
