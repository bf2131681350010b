// SPDX-License-Identifier: MIT
#include "StoredPicture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

/// The control structure of libpng's simplified interface, freed with its scope.
struct Png
{
    Png()
    {
        std::memset(&image, 0, sizeof image);
        image.version = PNG_IMAGE_VERSION;
    }
    ~Png() { png_image_free(&image); }
    Png(const Png&) = delete;
    Png& operator=(const Png&) = delete;
    png_image image;
};

bool Refuse(const std::string& file, const char* reason, std::string* why)
{
    *why = file + ": " + reason;
    return false;
}

/// Grey where the pictures agree, the brighter red the more they differ.
ZImage DifferencePicture(const ZImage& image, const ZImage& stored)
{
    ZImage shown = image;
    for (size_t pixel = 0; pixel + 2 < image.rgb.size(); pixel += 3) {
        int most = 0, sum = 0;
        for (size_t channel = pixel; channel < pixel + 3; ++channel) {
            most = std::max(most, std::abs(int{image.rgb[channel]} - int{stored.rgb[channel]}));
            sum += stored.rgb[channel];
        }
        const auto grey = static_cast<std::uint8_t>(sum / 9);
        shown.rgb[pixel] = most > 0 ? static_cast<std::uint8_t>(std::min(255, 96 + 2 * most)) : grey;
        shown.rgb[pixel + 1] = shown.rgb[pixel + 2] = most > 0 ? 0 : grey;
    }
    return shown;
}

void ShowFailure(const ZImage& image, const ZImage* stored, const std::string& name)
{
    std::string why;
    std::filesystem::create_directories(SKINDESK_PICTURE_OUTPUT);
    const std::string file = std::string(SKINDESK_PICTURE_OUTPUT) + "/" + name;
    EXPECT_TRUE(Picture_Write(file + ".png", image, &why)) << why;
    if (stored != nullptr) {
        EXPECT_TRUE(Picture_Write(file + "-difference.png", DifferencePicture(image, *stored), &why)) << why;
    }
}

bool IsStoring()
{
    const char* const asked = std::getenv("SKINDESK_STORE_PICTURES");
    return asked != nullptr && std::strcmp(asked, "1") == 0;
}

} // namespace

PictureDifference Picture_Compare(const ZImage& a, const ZImage& b)
{
    if (a.width != b.width || a.height != b.height || a.rgb.size() != b.rgb.size() || a.rgb.empty())
        return {255, 1};
    double sum = 0;
    size_t different = 0;
    for (size_t pixel = 0; pixel < a.rgb.size(); pixel += 3) {
        int most = 0;
        for (size_t channel = pixel; channel < pixel + 3; ++channel) {
            const int apart = std::abs(int{a.rgb[channel]} - int{b.rgb[channel]});
            most = std::max(most, apart);
            sum += apart;
        }
        different += most > kPixelTolerance ? 1 : 0;
    }
    const auto channels = static_cast<double>(a.rgb.size());
    return {sum / channels, static_cast<double>(different) * 3 / channels};
}

bool Picture_IsTheSame(const PictureDifference& difference)
{
    return difference.mean <= kMeanTolerance && difference.share <= kShareTolerance;
}

bool Picture_Read(const std::string& file, ZImage& image, std::string* why)
{
    Png png;
    if (png_image_begin_read_from_file(&png.image, file.c_str()) == 0)
        return Refuse(file, png.image.message, why);
    png.image.format = PNG_FORMAT_RGB;
    image.width = static_cast<int>(png.image.width);
    image.height = static_cast<int>(png.image.height);
    image.rgb.resize(PNG_IMAGE_SIZE(png.image));
    if (png_image_finish_read(&png.image, nullptr, image.rgb.data(), 0, nullptr) == 0)
        return Refuse(file, png.image.message, why);
    return true;
}

bool Picture_Write(const std::string& file, const ZImage& image, std::string* why)
{
    Png png;
    png.image.width = static_cast<png_uint_32>(image.width);
    png.image.height = static_cast<png_uint_32>(image.height);
    png.image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&png.image, file.c_str(), 0, image.rgb.data(), 0, nullptr) == 0)
        return Refuse(file, png.image.message, why);
    return true;
}

std::string Picture_StoredFile(const std::string& name)
{
    return std::string(SKINDESK_SOURCE_DIR) + "/tests/pictures/stored/" + name + ".png";
}

void Picture_ExpectStored(const ZImage& image, const std::string& name)
{
    std::string why;
    if (image.rgb.empty()) {
        ADD_FAILURE() << "there is no picture to compare with " << name;
        return;
    }
    if (IsStoring()) {
        EXPECT_TRUE(Picture_Write(Picture_StoredFile(name), image, &why)) << why;
        return;
    }
    ZImage stored;
    if (!Picture_Read(Picture_StoredFile(name), stored, &why)) {
        ADD_FAILURE() << why;
        ShowFailure(image, nullptr, name);
        return;
    }
    if (image.width != stored.width || image.height != stored.height) {
        ADD_FAILURE() << "the picture is " << image.width << " x " << image.height << ", the stored one "
                      << stored.width << " x " << stored.height;
        return;
    }
    const PictureDifference difference = Picture_Compare(image, stored);
    if (Picture_IsTheSame(difference))
        return;
    ADD_FAILURE() << "the picture is not the stored one: channels differ by " << difference.mean
                  << " in the mean (at most " << kMeanTolerance << "), and " << 100 * difference.share
                  << " % of the pixels differ (at most " << 100 * kShareTolerance
                  << " %); see " SKINDESK_PICTURE_OUTPUT "/" << name << ".png and " << name << "-difference.png";
    ShowFailure(image, &stored, name);
}
