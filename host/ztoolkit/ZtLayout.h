// SPDX-License-Identifier: MIT
// Region layout: named rectangles given by four edges, each relative to the form or to another region.
#pragma once

#include "ztoolkit/ZtView.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

/// What an edge is measured from. `Left`...`Bottom` are edges of the reference (a region, or the form when the
/// reference is empty); `Width` and `Height` are its sizes; `Size` is a plain number of pixels.
enum class ZtAttachment
{
    Left,
    Top,
    Right,
    Bottom,
    Width,
    Height,
    Size
};

/// One edge: multiplier * (what is attached to) + offset. For the left and top edge the result is a position in the
/// form. For the right and bottom edge an attachment to an edge gives a position, to Width, Height or Size gives the
/// region's own width or height. Offsets grow to the right and downwards: "9 from the right" is {-9, Right}. Fractions
/// of a pixel that the multiplier makes are dropped (downwards) before the offset is added.
struct ZtEdge
{
    int offset = 0;
    ZtAttachment attachment = ZtAttachment::Size;
    std::string reference; ///< another region of the same layout; empty = the form
    double multiplier = 1.0;
};

struct ZtRegion
{
    std::string name;
    ZtEdge left, top, right, bottom;
    ZtView* view = nullptr; ///< not owned; null = the region is only an anchor
    ZtRect rect;            ///< as last arranged, in the layout itself; never negative in size
};

/// A view that holds other views in regions.
class ZtLayout : public ZtView
{
public:
    ZCLASS_DECLARE()
    ZtLayout(ZtViewKind viewKind, const char* name);
    ~ZtLayout() override;
    /// Lets go of all views and destroys those that the host owns.
    void Destruct() override;

    /// Adds a region, or replaces the one of that name in place.
    ZtRegion& AddRegion(const char* name, const ZtEdge& left, const ZtEdge& top, const ZtEdge& right,
                        const ZtEdge& bottom);
    /// Puts a view into a region, in place of what was there; null takes it out. A view lies in one region at most:
    /// it leaves the one that it was in. An unknown region is misuse, and so is a layout inside itself.
    void SetRegionView(const char* region, ZtView* view);
    ZtRegion* FindRegion(const char* name);
    const std::vector<std::unique_ptr<ZtRegion>>& GetRegions() const { return m_regions; }

    /// Computes all rectangles for a form of this size, writes them to the views and arranges views that are layouts.
    /// Regions that refer to each other in a circle, or to a region that is not there, are reported by name in one
    /// warning and get an empty rectangle, as do those that depend on them. The same complaint is made once. Takes time
    /// in proportion to the number of regions, in whatever order they were added.
    void Arrange(int width, int height);
    /// The views of all regions, those of inner layouts after their holder, in order of the regions.
    void CollectViews(std::vector<ZtView*>& views);

protected:
    void ForgetView(ZtView* view) override;

private:
    void TakeOut(ZtRegion& region);

    std::vector<std::unique_ptr<ZtRegion>> m_regions;
    std::map<std::string, ZtRegion*> m_byName;
    std::string m_complaint; ///< the last one made
};

/// A panel: a frame that may hold views of its own.
class ZtPanel : public ZtLayout
{
public:
    ZCLASS_DECLARE()
    explicit ZtPanel(const char* name);
    /// Border style and width; 0 and 0 is flat.
    void SetBorder(int style, int width);
    int GetBorderStyle() const { return m_borderStyle; }
    int GetBorderWidth() const { return m_borderWidth; }
    /// Draw the border flat whatever its style.
    void SetFlat(bool flat);
    bool IsFlat() const { return m_flat; }

private:
    int m_borderStyle = 0;
    int m_borderWidth = 0;
    bool m_flat = false;
};

/// A form: a layout with a size of its own.
class ZtForm : public ZtLayout
{
public:
    ZCLASS_DECLARE()
    explicit ZtForm(const char* name);
    /// The size that the form was drawn for, in pixels.
    void SetDesignSize(int width, int height);
    int GetDesignWidth() const { return m_designWidth; }
    int GetDesignHeight() const { return m_designHeight; }

private:
    int m_designWidth = 0;
    int m_designHeight = 0;
};
