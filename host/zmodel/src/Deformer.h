// SPDX-License-Identifier: MIT
// Morph targets and linear blend skinning on plain arrays.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <vector>

/// The places where a skin's links stand now: for each link the displacement that it gives a point of the model, in the
/// model's own space.
///
/// A link with inverse bind matrix B on a bone with global matrix G carries a point p of a model with global matrix M
/// to p * B * G * inverse(M) (row vectors). Kept is D = B * G * inverse(M) - 1, taken about the model's middle: at rest
/// it is zero and the point stays exactly where it is, and far from the origin no digits are lost. The three modes are
/// then
///   normalise  p + sum(w p D) / sum(w)     additive  p + sum(w p D)     total 100  p (1 - sum(w)) + sum(w p (1 + D)),
/// of which the last is the second written another way: the missing part of one stays at the undeformed point.
class SkinPose
{
public:
    enum class Change
    {
        None,
        Some, ///< of the vertices that Update names
        All
    };
    /// Brings the displacements up to date and says for which vertices something differs from before: those whose
    /// weights changed and those of links that moved, rising and without repeats in `touched`; where these are many,
    /// for all. `middle` is where the model lies. Links without a bone, with an option other than 0, or whose matrix is
    /// no number take no part.
    Change Update(ZSkin& skin, const ZgeVector3& middle, const ZTransformNode& model, std::vector<int>& touched);
    /// The model's global matrix has no inverse: nothing can be carried into its space.
    bool IsSingular() const { return m_singular; }
    /// More of the links turn the model's space inside out than keep it, as all do where the mesh's node is mirrored
    /// and its skeleton is not: the deformed polygons run the other way round.
    bool IsMirrored() const { return m_mirrored; }

    /// Deforms `count` points (x, y, z, 1 each) into `deformed`, which may not be `points`.
    void Deform(ZSkin& skin, const float* points, float* deformed, int count) const;
    /// The same for some of the vertices, rising and without repeats: the same bits as Deform gives them.
    void DeformSome(ZSkin& skin, const float* points, float* deformed, const std::vector<int>& vertices) const;

private:
    struct LinkState
    {
        const ZTransformNode* bone = nullptr;
        std::uint64_t boneVersion = 0;
        bool takesPart = false;
        bool mirrors = false;  ///< its matrix has a negative determinant
        float rows[4][4] = {}; ///< D about the middle; the fourth column counts weights: 0, 0, 0, 1
    };
    struct SortedEntries
    {
        std::uint64_t listVersion = 0; ///< of the link's entries when they were sorted
        std::vector<int> vertices;
        std::vector<int> entries; ///< of the link
        std::vector<double> weights;
    };
    struct EntryRange;
    struct Block;

    void CountMirroringLinks();
    bool PlaceLinks(ZSkin& skin, const ZTransformNode& model, bool all, std::vector<int>& moved);
    void PlaceLink(LinkState& state, const ZgeMatrix& inverseBind, const ZgeMatrix& toModel) const;
    void KeepSorted(ZSkin& skin, const std::vector<int>* touched);
    static void SortEntries(ZSkin& skin, int link, SortedEntries& sorted);
    static bool AddVerticesOf(ZSkin& skin, const std::vector<int>& links, std::vector<int>& touched);
    std::vector<EntryRange> CollectEntries(ZSkin& skin) const;
    static void AddNormalisedOffset(const std::vector<EntryRange>& entries, int vertex, const float* point,
                                    float* place);
    void DeformRange(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed, int begin,
                     int end) const;
    void DeformListed(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed,
                      const int* begin, const int* end) const;
    static void PlaceVertex(const std::vector<EntryRange>& entries, bool normalise, const Block& block, int vertex,
                            const float* sum, float* place);

    std::vector<LinkState> m_links;
    std::vector<SortedEntries> m_sorted; ///< of links whose vertices do not rise; empty for the others
    std::uint64_t m_touchMark = 0;       ///< of the skin, at the last update
    ZgeVector3 m_middle;
    std::uint64_t m_linkVersion = 0;
    std::uint64_t m_entryVersion = 0;
    std::uint64_t m_modelVersion = 0;
    bool m_singular = false;
    bool m_mirrored = false;
};

/// undeformed + sum of weight * displacement, x, y, z, 1 each. Targets of weight 0 are passed over.
void MorphPositions(const float* points, const std::vector<ZMorphTarget>& targets, const std::vector<float>& weights,
                    float* morphed, int count);
