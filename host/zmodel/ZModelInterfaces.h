// SPDX-License-Identifier: MIT
// The numbered interfaces that a model answers: geometry and transform, skin links, surface and drawing.
#pragma once

#include "zbaselib/ZGe.h"

class ZModel;

inline constexpr int kInterfaceSkinLinks = 369369369;
inline constexpr int kInterfaceModelGeometry = 3637023;
inline constexpr int kInterfaceSurface = 171238699;
// A bone that answers one of these is drawn in a matrix of its own and without the viewer's vector.
inline constexpr int kInterfaceBoneOwnDrawingA = 90234650;
inline constexpr int kInterfaceBoneOwnDrawingB = 348349;
inline constexpr int kInterfaceBoneOwnDrawingC = 54338798;

/// Geometry and transform; every model answers it, bones and plain nodes with zero vertices. Arrays hold four floats an
/// element, in the model's own space, belong to the model and stay valid until its geometry, pose or weights change and
/// it is asked again. The argument 1 asks for the deformed state, 0 for the undeformed one. Null when there are none.
class IModelGeometry
{
public:
    virtual int VertexCount() = 0;
    /// x, y, z, 1 per vertex.
    virtual const float* VertexPositions(int deformed) = 0;
    /// Unit normal of the surface and 0 per vertex; null for models without a surface.
    virtual const float* DisplayPositions(int deformed) = 0;
    virtual int PolygonCount() = 0;
    /// The vertex numbers of all polygons one after the other; the last one of each is stored as its bitwise
    /// complement, so that it is negative and still names its vertex. `deformed` makes no difference.
    virtual const int* PolygonIndices(int deformed) = 0;
    /// Points of the tessellated grid of a NURBS surface, U fastest; null without a grid.
    virtual const float* TessellatedPoints(int deformed) = 0;
    /// The grid's two dimensions; both not zero exactly for a NURBS surface that has a grid.
    virtual int TessellationWidth() = 0;
    virtual int TessellationHeight() = 0;
    /// The node's own global matrix.
    virtual ZgeMatrix GlobalTransform() = 0;
    /// A tool begins and ends to edit this mesh; calls nest and end below begin is misuse.
    virtual void BeginEdit() = 0;
    virtual void EndEdit() = 0;

protected:
    virtual ~IModelGeometry() = default;
};

/// The links of a skin, with a current link chosen by BeginLink and released by EndLink. Asking for entries without a
/// current link is misuse. An entry index of -1, or one that is not there, is ignored by setters and answers -1 or 0.
class ISkinLinks
{
public:
    virtual void BeginLink(int link) = 0;
    virtual void EndLink() = 0;
    /// Removes a link and shifts the later ones; cannot be undone, so the host drops the undo history.
    virtual void RemoveLink(int link) = 0;
    virtual int LinkCount() = 0;
    /// The bone that the link follows; null when it has none or there is no such link.
    virtual ZModel* LinkModel(int link) = 0;
    /// Appends a link and answers its index, or the index of the link that already follows the bone. Its bind is as if
    /// the bone had been bound with the others: its present offset from its nearest linked ancestor applied to that
    /// ancestor's bind; without one, its present global transform.
    virtual int AddLink(ZModel* bone) = 0;

    // Of the current link.
    virtual void AddEntry(int vertex, double weight) = 0;
    virtual int EntryCount() = 0;
    virtual int EntryVertex(int entry) = 0;
    virtual double EntryWeight(int entry) = 0;
    virtual void SetEntryWeight(double weight, int entry) = 0;
    virtual void ClearEntries() = 0;
    /// Constant time.
    virtual int FindEntry(int vertex) = 0;
    /// The bind transform: the inverse bind matrix split into translation, rotation (degrees about X, Y, Z), scaling.
    virtual void LinkBindTransform(ZgeVector4& translation, ZgeVector3& rotation, ZgeVector3& scaling) = 0;
    /// Setting exactly what another link of this skin answered carries that link's exact matrix along.
    virtual void SetLinkBindTransform(const ZgeVector4& translation, const ZgeVector3& rotation,
                                      const ZgeVector3& scaling) = 0;
    /// Sets the per-link option: 0 = the link takes part as the skin's mode says; any other = it takes no part in the
    /// deformation, as if it had no entries.
    virtual void ResetLinkOption(int option) = 0;

    // Whole link at once: the same as the calls above entry by entry, for whoever walks all of them. A skin that keeps
    // its entries otherwise inherits these and stays correct.
    /// Points at the current link's entries, side by side, valid until the skin next changes; false when the skin does
    /// not keep them as arrays (then the arguments are untouched and the entries are asked for one by one).
    virtual bool EntryArrays(const int*& vertices, const double*& weights, int& count)
    {
        static_cast<void>(vertices), static_cast<void>(weights), static_cast<void>(count);
        return false;
    }
    /// Appends `count` entries, in order.
    virtual void AddEntries(const int* vertices, const double* weights, int count)
    {
        for (int i = 0; i < count; ++i)
            AddEntry(vertices[i], weights[i]);
    }
    /// So many more entries are about to come, at most: room for them is better made at once. Changes nothing else.
    virtual void ReserveEntries(int more) { static_cast<void>(more); }
    /// Sets the weights of `count` vertices, in order; a vertex without an entry is passed over. Answers how many were.
    virtual int SetVertexWeights(const int* vertices, const double* weights, int count)
    {
        int passedOver = 0;
        for (int i = 0; i < count; ++i) {
            const int entry = FindEntry(vertices[i]);
            SetEntryWeight(weights[i], entry);
            passedOver += entry < 0 ? 1 : 0;
        }
        return passedOver;
    }

    // Of the skin.
    /// 0 = normalise, 1 = additive, 2 = total 100.
    virtual int DeformMode() = 0;
    /// The link whose weights the host's own shading shows; -1 = none.
    virtual void SetSkinDisplayValue(double value) = 0;

protected:
    virtual ~ISkinLinks() = default;
};

/// One interface with two halves: a NURBS surface answers the surface half, a drawable bone the drawing half; the other
/// half answers zeros and draws nothing.
class ISurface
{
public:
    virtual int ControlPointCount() { return 0; }
    /// Control points of the deformed surface, x, y, z, 1 each (the rational weight is not multiplied in), U fastest:
    /// point = v * CountU + u.
    virtual const float* ControlPoints() { return nullptr; }
    virtual int CountU() { return 0; }
    virtual int CountV() { return 0; }
    /// Draws with the current OpenGL matrix; `viewer` is the unit vector from the bone to the viewer in world space, or
    /// null for a drawing that does not depend on it.
    virtual void Draw(const ZgeVector3* viewer) { static_cast<void>(viewer); }

protected:
    virtual ~ISurface() = default;
};
