// SPDX-License-Identifier: MIT
// Every recording, played on the real library and host. The Python door plays the same files.
#include "Replayer.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const fs::path kFolder = fs::path(SKINDESK_SOURCE_DIR) / "tests/gestures/recordings";

std::vector<std::string> Recordings()
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(kFolder))
        if (entry.path().extension() == ".txt")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class Recording : public testing::TestWithParam<std::string>
{
};

TEST_P(Recording, Holds)
{
    Replayer replayer(SKINDESK_PLUGIN_FOLDER, (kFolder / (GetParam() + ".txt")).string());
    replayer.Play();
}

INSTANTIATE_TEST_SUITE_P(Gestures, Recording, testing::ValuesIn(Recordings()),
                         [](const testing::TestParamInfo<std::string>& name) { return name.param; });

TEST(Recordings, ThereAreSome) { EXPECT_GE(Recordings().size(), 10U); }

/// A recording of these lines, beside nothing else.
void PlayLines(const std::string& lines)
{
    const fs::path file = fs::temp_directory_path() / ("skindesk-recording-" + std::to_string(::getpid()) + ".txt");
    std::ofstream(file) << lines;
    Replayer(SKINDESK_PLUGIN_FOLDER, file.string()).Play();
    fs::remove(file);
}

TEST(Recordings, WhatDoesNotHoldIsAFailure)
{
    EXPECT_NONFATAL_FAILURE(PlayLines("tool\nexpect vertices 3\n"), "expected \"3\", found nothing");
}

TEST(Recordings, AWordThatIsNoneIsAFailure)
{
    EXPECT_NONFATAL_FAILURE(PlayLines("jump 1 2\nexpect undo\n"), "there is no such word");
}

TEST(Recordings, ARecordingThatExpectsNothingIsAFailure)
{
    EXPECT_NONFATAL_FAILURE(PlayLines("# nothing\nsize 100 100\n"), "expects nothing");
}

} // namespace
