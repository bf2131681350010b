// SPDX-License-Identifier: MIT
// The skin of a model: links to bones, with the vertices that each pulls and how strongly.
#pragma once

#include "zbaselib/ZArray.h"
#include "zmodel/ZModelInterfaces.h"

#include <cstdint>
#include <memory>
#include <vector>

inline constexpr int kDeformNormalise = 0;
inline constexpr int kDeformAdditive = 1;
inline constexpr int kDeformTotal100 = 2;

/// Skin storage. BeginLink makes a link current until EndLink; beginning another one in between is misuse, ending
/// without a current link is not. Entries name vertices of the owner: others are refused as misuse. User-interface
/// thread only, or an evaluation pass while that waits. A link keeps its entries as two arrays (vertex, weight) and
/// knows in which stretches their vertices rise; an index is built at the first question that these do not answer.
/// Weights are fractions of one.
class ZSkin : public ISkinLinks
{
public:
    explicit ZSkin(ZModel* owner, int vertexCount, int deformMode = kDeformNormalise);
    ~ZSkin() override;
    ZSkin(const ZSkin&) = delete;
    ZSkin& operator=(const ZSkin&) = delete;

    // ISkinLinks.
    void BeginLink(int link) override;
    void EndLink() override;
    void RemoveLink(int link) override;
    int LinkCount() override;
    ZModel* LinkModel(int link) override;
    int AddLink(ZModel* bone) override;
    void AddEntry(int vertex, double weight) override;
    int EntryCount() override;
    int EntryVertex(int entry) override;
    double EntryWeight(int entry) override;
    void SetEntryWeight(double weight, int entry) override;
    void ClearEntries() override;
    int FindEntry(int vertex) override;
    void LinkBindTransform(ZgeVector4& translation, ZgeVector3& rotation, ZgeVector3& scaling) override;
    void SetLinkBindTransform(const ZgeVector4& translation, const ZgeVector3& rotation,
                              const ZgeVector3& scaling) override;
    void ResetLinkOption(int option) override;
    bool EntryArrays(const int*& vertices, const double*& weights, int& count) override;
    void AddEntries(const int* vertices, const double* weights, int count) override;
    void ReserveEntries(int more) override;
    int SetVertexWeights(const int* vertices, const double* weights, int count) override;
    int DeformMode() override;
    void SetSkinDisplayValue(double value) override;

    // For whoever fills the skin from a file, draws it or reads it back: no current link needed.
    ZModel* GetOwner() const;
    int GetVertexCount() const;
    /// Appends a link with an exact inverse bind matrix (row vectors); `bone` may be null. Answers its index. Unlike
    /// AddLink it makes a second link for a bone that has one.
    int AppendLink(ZModel* bone, const ZgeMatrix& inverseBind);
    /// Replaces the entries of a link at once; vertices must be in range and without repeats.
    void SetEntries(int link, ZArrayTemplate<int>&& vertices, ZArrayTemplate<double>&& weights);
    const ZArrayTemplate<int>& GetEntryVertices(int link) const;
    const ZArrayTemplate<double>& GetEntryWeights(int link) const;
    /// Do the link's vertices rise from entry to entry? Then passes over ranges of vertices need no search.
    bool AreEntriesAscending(int link) const;
    const ZgeMatrix& GetInverseBind(int link) const;
    /// The first link that follows `bone`, or -1; constant time.
    int FindLink(const ZModel* bone) const;
    int GetLinkOption(int link) const;
    double GetDisplayValue() const;
    /// Weights of all vertices, vertex after vertex: offsets (vertices + 1), links and weights.
    void BuildCsr(std::vector<int>& offsets, std::vector<int>& links, std::vector<double>& weights) const;
    /// Takes every link of `bone` out, when the bone leaves the scene.
    void RemoveLinksOf(const ZModel* bone);

    /// Counts up at every change of a weight, of the entries or of the links.
    std::uint64_t GetVersion() const { return m_version; }
    /// Counts up when links are added or removed, or when a link's bind transform or option changes.
    std::uint64_t GetLinkVersion() const;
    /// Differs from an earlier answer when entries of the link were added or taken away; setting weights changes
    /// nothing.
    std::uint64_t GetEntryListVersion(int link) const;
    /// Which vertices were given other weights: keep GetTouchMark's answer, and ask later for those since then. They
    /// are appended with repeats. False, and nothing appended, when so much has changed since that it is not
    /// remembered.
    std::uint64_t GetTouchMark() const;
    bool GetTouchedSince(std::uint64_t mark, std::vector<int>& vertices) const;
    /// Vertices whose sum of weights was changed outside the undo stack since the last call (a skin rewritten to sum to
    /// one); the host says the number in the status line.
    int TakeNormalisedCount();

private:
    struct Link;
    struct State;

    bool HasLink(const char* call, int link) const;
    void NoCurrentLink(const char* call) const;
    void RefuseVertex(const char* call, int vertex) const;
    int AppendNewLink(ZModel* bone, const ZgeMatrix& inverseBind);
    void EraseLink(int link);
    void BeginRewrite();
    void EndRewrite();

    // What the calls for single entries touch stands here, one step from the object; the rest is the State's.
    Link* m_current = nullptr;
    int m_vertexCount = 0;
    bool m_rewriting = false;
    std::uint64_t m_version = 1;
    std::unique_ptr<State> m_state;
};
