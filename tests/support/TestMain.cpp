// SPDX-License-Identifier: MIT
// The main function of every test program. A guest that misuses the host fails its test instead of leaving a line.
#include "zbaselib/ZReport.h"

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    ZReport_SetMisuseFatal(true);
    return RUN_ALL_TESTS();
}
