// SPDX-License-Identifier: MIT
// What an edit of weights did to a file beside the weights:
//
//     gltf_compare OPENED SAVED
//
// Prints a line for each change that such an edit has no business with. The status is 0 when there is none, 1 when
// there are some, 2 when a file cannot be read.
#include "GltfCompare.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "gltf_compare OPENED SAVED\n";
        return 2;
    }
    try {
        const auto foreign =
            skindesk::test::ForeignChanges(skindesk::test::ReadRawGltf(argv[1]), skindesk::test::ReadRawGltf(argv[2]));
        for (const std::string& line : foreign) {
            std::cout << line << '\n';
        }
        return foreign.empty() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
}
