// SPDX-License-Identifier: MIT
#include "viewport/ZWeightPick.h"

#include "editing/ZWeightSelection.h"
#include "weights/IWeightGeom.h"
#include "weights/ZWeightUIModelData.h"

#include <unordered_map>

namespace {

/// The screen test of one model: everything that does not change from vertex to vertex.
class ScreenTest
{
public:
    ScreenTest(const ZgeMatrix& combined, const ZPickRectangle& rectangle) : m_matrix(combined), m_rectangle(rectangle)
    {
    }

    /// Projected positions are narrowed to single precision before they meet the rectangle, whose numbers are single as
    /// well: a point that was clicked exactly lies on the edge in both. A point in the camera's own plane (W = 0) has
    /// no projection and is never hit; one behind the camera is tested like any other.
    bool Hits(const float* p) const
    {
        const double px = static_cast<double>(p[0]);
        const double py = static_cast<double>(p[1]);
        const double pz = static_cast<double>(p[2]);
        const double inverse = 1.0 / Coordinate(px, py, pz, 3);
        const double w = static_cast<double>(static_cast<float>(inverse));
        const float x = static_cast<float>(Coordinate(px, py, pz, 0) * w);
        const float y = static_cast<float>(Coordinate(px, py, pz, 1) * w);
        // For an upright rectangle of some extent the four edge tests are these comparisons. A number that is not
        // finite fails them all the same: NaN compares false, and the rectangle's own numbers are finite.
        return (x >= m_rectangle.minimumX) & (x <= m_rectangle.maximumX) & (y >= m_rectangle.minimumY) &
               (y <= m_rectangle.maximumY);
    }

private:
    double Coordinate(double x, double y, double z, int column) const
    {
        return x * m_matrix(0, column) + y * m_matrix(1, column) + z * m_matrix(2, column) + m_matrix(3, column);
    }

    ZgeMatrix m_matrix;
    ZPickRectangle m_rectangle;
};

ZgeMatrix GlobalMatrix(const ZWeightUIModelData& data) { return data.GetModel()->GetTransformMatrix(true); }

ZgeVector3 EyeInModelSpace(IViewerCamera& camera, const ZgeMatrix& global)
{
    const ZgeVector4 eye = camera.CameraToScene({0, 0, 0, 1}) * ZgeInverse(global);
    return {eye.x, eye.y, eye.z};
}

bool FacesEye(const float* p, const float* n, const ZgeVector3& eye)
{
    const double toward = (static_cast<double>(p[0]) - eye.x) * static_cast<double>(n[0]) +
                          (static_cast<double>(p[1]) - eye.y) * static_cast<double>(n[1]) +
                          (static_cast<double>(p[2]) - eye.z) * static_cast<double>(n[2]);
    return toward < 0;
}

/// Appends (model, vertex) for every vertex below `count` for which `isHit` holds. Room for all of them is taken at
/// once, in address space only: memory that nothing is written to is not given out. Each pair is written where the next
/// hit belongs, and stays if it is one; that no branch depends on the vertex is what makes the pass fast over a
/// rectangle's ragged edge.
template <class IsHit> void AddHits(ZArrayTemplate<int>& hits, int model, int count, IsHit isHit)
{
    const int before = hits.GetCount();
    hits.ReserveMore(2 * count);
    hits.SetCountUninitialised(before + 2 * count);
    int* const first = hits.GetData() + before;
    int* next = first;
    for (int vertex = 0; vertex < count; ++vertex) {
        next[0] = model;
        next[1] = vertex;
        next += isHit(vertex) ? 2 : 0;
    }
    hits.SetCount(before + static_cast<int>(next - first));
}

void PickAllVertices(IViewportOwner& tool, IViewerCamera& camera, const ScreenTest& test, ZWeightUIModelData& data,
                     int modelIndex, ZArrayTemplate<int>& hits)
{
    IWeightGeom& geometry = *data.geometry;
    const float* const normals = tool.IsForegroundOnly() ? geometry.SurfacePositions() : nullptr;
    const float* const positions = geometry.VertexPositions();
    const int count = positions != nullptr ? geometry.VertexCount() : 0;
    const auto at = [](int vertex) { return 4 * static_cast<size_t>(vertex); };
    if (normals == nullptr) {
        AddHits(hits, modelIndex, count, [&](int vertex) { return test.Hits(positions + at(vertex)); });
        return;
    }
    const ZgeVector3 eye = EyeInModelSpace(camera, GlobalMatrix(data));
    AddHits(hits, modelIndex, count, [&](int vertex) {
        return FacesEye(positions + at(vertex), normals + at(vertex), eye) && test.Hits(positions + at(vertex));
    });
}

void PickSelectedVertices(const ZArrayTemplate<int>& vertices, const ScreenTest& test, ZWeightUIModelData& data,
                          int modelIndex, ZArrayTemplate<int>& hits)
{
    const float* const positions = data.geometry->VertexPositions();
    const int count = positions != nullptr ? data.geometry->VertexCount() : 0;
    for (const int vertex : vertices)
        if (vertex >= 0 && vertex < count && test.Hits(positions + 4 * static_cast<size_t>(vertex))) {
            hits.Add(modelIndex);
            hits.Add(vertex);
        }
}

/// The panel's selected vertices by model, in list order: sorted once, so that many models do not each walk all rows.
std::unordered_map<const ZWeightUIModelData*, ZArrayTemplate<int>> SelectedByModel(const ZWeightSelection& selection)
{
    std::unordered_map<const ZWeightUIModelData*, ZArrayTemplate<int>> sorted;
    for (int row = 0; row < selection.vertexRows.GetCount(); ++row)
        sorted[selection.vertexModels[row]].Add(selection.vertexRows[row]);
    return sorted;
}

} // namespace

void ZWeightPick_Pick(IViewportOwner& tool, IViewerCamera& camera, const ZPickRectangle& rectangle, bool restricted,
                      ZArrayTemplate<int>& hits)
{
    const ZgeMatrix toScreen = camera.ViewMatrix() * camera.ProjectionMatrix();
    const auto selected = restricted ? SelectedByModel(tool.Selection())
                                     : std::unordered_map<const ZWeightUIModelData*, ZArrayTemplate<int>>();
    ZWeightUIModelDataList& models = tool.ModelDataList();
    for (int index = 0; index < models.GetCount(); ++index) {
        ZWeightUIModelData& data = *models[index];
        if (data.modelSelected == 0 || data.geometry == nullptr)
            continue;
        const ScreenTest test(GlobalMatrix(data) * toScreen, rectangle);
        if (!restricted)
            PickAllVertices(tool, camera, test, data, index, hits);
        else if (const auto found = selected.find(&data); found != selected.end())
            PickSelectedVertices(found->second, test, data, index, hits);
    }
}

bool ZWeightPick_SelectionBox(IViewportOwner& tool, ZgeBox& box)
{
    int counted = 0;
    ZWeightUIModelDataList& models = tool.ModelDataList();
    for (int index = 0; index < models.GetCount(); ++index) {
        ZWeightUIModelData& data = *models[index];
        if (data.modelSelected == 0 || data.noSelectedVertices != 0 || data.geometry == nullptr)
            continue;
        const ZgeMatrix global = GlobalMatrix(data);
        const float* const positions = data.geometry->VertexPositions();
        ZgeBox modelBox;
        if (positions != nullptr)
            for (const int vertex : data.selectedVertices) {
                const float* const p = positions + 4 * static_cast<size_t>(vertex);
                modelBox.Widen(ZgeTransformPoint(
                    {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])}, global));
            }
        box.Widen(modelBox);
        ++counted; // a model without positions counts, though it adds nothing
    }
    return counted > 0;
}
