// SPDX-License-Identifier: MIT
// Where the panel's controls lie: three columns and the options at the right edge; on a narrow screen bones and
// vertices share the first column.
#include "panel/ZCharacterWeightingNormalLayout.h"

namespace {

using enum ZtAttachment;

ZtEdge FromLeft(int offset) { return {offset, Left, {}, 1.0}; }
ZtEdge FromTop(int offset) { return {offset, Top, {}, 1.0}; }
ZtEdge FromRight(int offset) { return {-offset, Right, {}, 1.0}; }
ZtEdge FromBottom(int offset) { return {-offset, Bottom, {}, 1.0}; }
ZtEdge Fixed(int pixels) { return {pixels, Size, {}, 1.0}; }
ZtEdge Of(const char* region, ZtAttachment attachment, int offset = 0, double multiplier = 1.0)
{
    return {offset, attachment, region, multiplier};
}

} // namespace

void ZCharacterWeightingNormalLayout::MakeDefaultLayout()
{
    const auto place = [this](ZtView& view, const ZtEdge& left, const ZtEdge& top, const ZtEdge& right,
                              const ZtEdge& bottom) {
        AddRegion(view.GetObjectName().c_str(), left, top, right, bottom);
        SetRegionView(view.GetObjectName().c_str(), &view);
    };
    place(labelBonesList, FromLeft(4), FromTop(6), Fixed(57), Fixed(14));
    place(labelVertexList, FromLeft(168), FromTop(6), Fixed(55), Fixed(14));
    place(labelWeights, FromLeft(337), FromTop(6), Fixed(42), Fixed(14));
    place(sphereSizeLabel, FromRight(180), FromTop(232), FromRight(115), Fixed(14));
    place(listBonesList, FromLeft(0), FromTop(27), Fixed(164), FromBottom(10));
    place(listVertexList, FromLeft(168), FromTop(27), Fixed(164), FromBottom(10));
    place(listWeightingMode, FromRight(180), FromTop(27), FromRight(9), Fixed(18));
    place(colorModeList, FromRight(180), FromTop(53), FromRight(9), Fixed(18));
    place(automaticBoneSelectionButton, FromRight(182), FromTop(79), FromRight(11), Fixed(20));
    place(cullFaceButton, FromRight(182), FromTop(104), FromRight(7), Fixed(20));
    place(boneColorEdit, FromRight(180), FromTop(129), FromRight(9), Fixed(20));
    place(toRestPositionButton, FromRight(182), FromTop(154), FromRight(11), Fixed(20));
    place(selectUButton, FromRight(182), FromTop(179), FromRight(11), Fixed(20));
    place(selectVButton, FromRight(182), FromTop(204), FromRight(11), Fixed(20));
    place(sphereSizeSlider, FromRight(105), FromTop(229), FromRight(9), Fixed(20));
    place(enableModelSelectionCheckBox, FromRight(180), FromTop(254), FromRight(9), Fixed(20));
    place(spreadWeightsBorder, FromLeft(336), FromTop(27), FromRight(189), FromBottom(10));

    spreadWeightsBorder.AddRegion("SpreadWeights", FromLeft(1), FromTop(1), FromRight(1), FromBottom(1));
    spreadWeightsBorder.SetRegionView("SpreadWeights", &spreadWeights);
}

void ZCharacterWeightingNormalLayout::MakeNarrowLayout()
{
    const auto move = [this](ZtView& view, const char* region, const ZtEdge& left, const ZtEdge& top,
                             const ZtEdge& right, const ZtEdge& bottom) {
        SetRegionView(view.GetObjectName().c_str(), nullptr); // the region stays: others are measured from it
        AddRegion(region, left, top, right, bottom);
        SetRegionView(region, &view);
    };
    move(listBonesList, "ListBonesList2", Of("ListBonesList", Left), Of("ListBonesList", Top),
         Of("ListBonesList", Width), Of("ListBonesList", Height, -15, 0.5));
    move(labelVertexList, "LabelVertexList2", Of("LabelBonesList", Left), Of("ListBonesList2", Bottom, 6),
         Of("ListBonesList2", Right), Of("LabelVertexList", Height));
    move(listVertexList, "ListVertexList2", Of("ListBonesList2", Left), Of("LabelVertexList2", Bottom, 6),
         Of("ListBonesList2", Width), Of("ListVertexList", Bottom));
    move(spreadWeightsBorder, "SpreadWeightsBorder2", Of("ListVertexList", Left), Of("SpreadWeightsBorder", Top),
         Of("SpreadWeightsBorder", Right), Of("SpreadWeightsBorder", Bottom));
    move(labelWeights, "LabelWeights2", Of("LabelVertexList", Left), Of("LabelWeights", Top), Of("LabelWeights", Width),
         Of("LabelWeights", Height));
}
