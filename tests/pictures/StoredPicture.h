// SPDX-License-Identifier: MIT
// Pictures that are stored beside the tests, and how much a new one may differ from them.
#pragma once

#include "zmanipulator/ZOffscreen.h"

#include <string>

/// How far two pictures of one size are apart. Channels count from 0 to 255.
struct PictureDifference
{
    double mean = 0;  ///< of the channels' differences
    double share = 0; ///< of the pixels in which a channel differs by more than kPixelTolerance
};

// Another version of the renderer rounds a colour or a line's end otherwise; it changes few pixels, and those little.
inline constexpr int kPixelTolerance = 16;
inline constexpr double kMeanTolerance = 0.4;
inline constexpr double kShareTolerance = 0.004;

PictureDifference Picture_Compare(const ZImage& a, const ZImage& b);
bool Picture_IsTheSame(const PictureDifference& difference);

/// False with a sentence when the file is no picture.
bool Picture_Read(const std::string& file, ZImage& image, std::string* why);
bool Picture_Write(const std::string& file, const ZImage& image, std::string* why);

/// The test's own picture against the stored one of that name; a failure of the test that runs when they differ, with
/// the new picture (NAME.png), and what is different (NAME-difference.png), in the folder test-results/pictures of the
/// build. With SKINDESK_STORE_PICTURES=1 in the environment the new picture is stored instead; look at it before it is
/// committed.
void Picture_ExpectStored(const ZImage& image, const std::string& name);
std::string Picture_StoredFile(const std::string& name);
