// SPDX-License-Identifier: MIT
// Models of a few vertices, and matrices to compare them with.
#pragma once

#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

/// Misuse throws while a test of it runs, and the report is empty before and after.
class ReportTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ZReport_ClearWarnings();
        ZReport_SetMisuseFatal(true);
    }
    void TearDown() override
    {
        ZReport_SetMisuseFatal(false);
        ZReport_ClearWarnings();
    }
};

/// A mesh of `count` vertices along X, one apart, without polygons.
inline std::unique_ptr<ZModelPolymesh> MakePoints(const char* name, int count)
{
    std::vector<float> positions;
    for (int i = 0; i < count; ++i)
        positions.insert(positions.end(), {static_cast<float>(i), 0.0F, 0.0F});
    auto mesh = std::make_unique<ZModelPolymesh>(name);
    mesh->SetGeometry(positions.data(), count, {}, {});
    return mesh;
}

inline std::unique_ptr<ZModel> MakeBone(const char* name, const ZgeVector3& place = {})
{
    auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
    bone->SetFileTransform(ZgeTranslation(place));
    return bone;
}

/// Writes one weight through the calls that a guest uses.
inline void AddWeight(ISkinLinks& skin, int link, int vertex, double weight)
{
    skin.BeginLink(link);
    skin.AddEntry(vertex, weight);
    skin.EndLink();
}

inline void ExpectNear(const ZgeMatrix& actual, const ZgeMatrix& expected, double tolerance)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(actual(row, column), expected(row, column), tolerance) << "row " << row << " column " << column;
}

inline void ExpectPoint(const float* actual, const ZgeVector3& expected, double tolerance)
{
    EXPECT_NEAR(static_cast<double>(actual[0]), expected.x, tolerance);
    EXPECT_NEAR(static_cast<double>(actual[1]), expected.y, tolerance);
    EXPECT_NEAR(static_cast<double>(actual[2]), expected.z, tolerance);
}
