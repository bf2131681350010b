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
    /// Brings the displacements up to date; true when one differs from before. `middle` is where the model lies.
    /// Links without a bone, or whose matrix is no number, take no part.
    bool Update(ZSkin& skin, const ZgeVector3& middle, const ZTransformNode& model);
    /// The model's global matrix has no inverse: nothing can be carried into its space.
    bool IsSingular() const { return m_singular; }

    /// Deforms `count` points (x, y, z, 1 each) into `deformed`, which may not be `points`.
    void Deform(ZSkin& skin, const float* points, float* deformed, int count) const;

private:
    struct LinkState
    {
        const ZTransformNode* bone = nullptr;
        std::uint64_t boneVersion = 0;
        bool takesPart = false;
        float rows[4][4] = {}; ///< D about the middle; the fourth column counts weights: 0, 0, 0, 1
    };
    struct SortedEntries
    {
        std::vector<int> vertices;
        std::vector<double> weights;
    };
    struct EntryRange;

    void PlaceLink(LinkState& state, const ZgeMatrix& inverseBind, const ZgeMatrix& toModel) const;
    void SortDisorderedLinks(ZSkin& skin);
    std::vector<EntryRange> CollectEntries(ZSkin& skin) const;
    static void AddNormalisedOffset(const std::vector<EntryRange>& entries, int vertex, const float* point,
                                    float* place);
    void DeformRange(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed, int begin,
                     int end) const;

    std::vector<LinkState> m_links;
    std::vector<SortedEntries> m_sorted; ///< of links whose vertices do not rise; empty for the others
    ZgeVector3 m_middle;
    std::uint64_t m_linkVersion = 0;
    std::uint64_t m_entryVersion = 0;
    std::uint64_t m_modelVersion = 0;
    bool m_singular = false;
};

/// undeformed + sum of weight * displacement, x, y, z, 1 each. Targets of weight 0 are passed over.
void MorphPositions(const float* points, const std::vector<ZMorphTarget>& targets, const std::vector<float>& weights,
                    float* morphed, int count);
