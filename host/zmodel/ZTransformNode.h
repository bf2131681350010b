// SPDX-License-Identifier: MIT
// A node of the scene: a place in the hierarchy and a transform in layers.
#pragma once

#include "object/ZEntity.h"
#include "zbaselib/ZGe.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Translation, rotation as a quaternion (x, y, z, w; normalised when it is used) and scaling: what a file and an
/// animation say about a node, so that a curve for one of them leaves the others exactly as they are.
struct ZNodeTRS
{
    ZgeVector3 translation;
    std::array<double, 4> rotation{0, 0, 0, 1};
    ZgeVector3 scaling{1, 1, 1};
    /// Scaled first, then rotated, then translated.
    ZgeMatrix GetMatrix() const;
    /// The nearest parts of an affine matrix; a shear is dropped.
    static ZNodeTRS FromMatrix(const ZgeMatrix& matrix);
    friend bool operator==(const ZNodeTRS&, const ZNodeTRS&) = default;
};

/// The local transform has layers, the later one that is set holds: what the file says; what the animation says at the
/// present time; what the user posed by hand. A constraint may set the global transform directly while it is active; it
/// then overrides the local ones, and children follow it. Writing a layer marks the subtree; globals are computed when
/// asked for. Parent pointers are not owned; the scene owns all nodes.
class ZTransformNode : public ZEntity
{
public:
    ZCLASS_DECLARE()
    explicit ZTransformNode(const char* name);
    ~ZTransformNode() override;

    ZTransformNode* GetParent() const { return m_parent; }
    const std::vector<ZTransformNode*>& GetChildren() const { return m_children; }
    /// Moves the node under `parent` (null = root level), at the end; the local transform stays. A node under itself is
    /// misuse.
    void SetParent(ZTransformNode* parent);
    /// 1 + depth of the parent, 0 for none.
    int GetDepth() const;

    void SetFileTransform(const ZgeMatrix& local);
    /// The same in parts, which are kept exactly.
    void SetFileTRS(const ZNodeTRS& trs);
    const ZgeMatrix& GetFileTransform() const { return m_file; }
    /// The parts of the file's transform: exact ones when it was given in parts.
    ZNodeTRS GetFileTRS() const;
    void SetAnimatedTransform(const std::optional<ZgeMatrix>& local);
    const std::optional<ZgeMatrix>& GetAnimatedTransform() const { return m_animated; }
    void SetPosedTransform(const std::optional<ZgeMatrix>& local);
    const std::optional<ZgeMatrix>& GetPosedTransform() const { return m_posed; }
    void SetConstrainedGlobal(const std::optional<ZgeMatrix>& global);
    const std::optional<ZgeMatrix>& GetConstrainedGlobal() const { return m_constrained; }

    /// Row-vector matrix: to the scene when `global`, else to the parent. Valid until a transform changes and it is
    /// asked for again.
    const ZgeMatrix& GetTransformMatrix(bool global) const;
    /// The global matrix as it would be without constraints.
    ZgeMatrix GetUnconstrainedGlobal() const;
    /// Three doubles of scaling, global or local, of `node` at the present time (`time` is always null).
    static ZgeVector3 GetScalingVector(const ZTransformNode* node, bool global, const void* time);
    /// Differs from an earlier answer exactly when the global matrix was, in between, seen to have changed.
    std::uint64_t GetTransformVersion() const;

    /// Names joined by '/' from the root; the second sibling of one name is told apart by "[2]", and so on.
    std::string GetPath() const;

private:
    friend class ZScene;
    /// What deleted parents leave to a node, so that it keeps its place: their local transforms, applied after its own.
    struct Inherited
    {
        ZgeMatrix file; ///< applied after the file's layer
        ZgeMatrix live; ///< applied after the animation's layer
    };

    void MarkSubtree();
    void BringUpToDate() const;
    void ComputeGlobal() const;
    ZgeMatrix LayeredLocal() const;
    ZgeMatrix FileLocal() const;
    ZgeMatrix AnimatedLocal() const;
    void Detach();
    std::vector<ZTransformNode*>* SiblingList() const;
    /// Puts the children into the parent's list where this node stands, each where it is in the scene now.
    void HandChildrenToParent();
    void InheritFrom(const ZTransformNode& parent);
    std::string PathStep() const;

    ZTransformNode* m_parent = nullptr;
    std::vector<ZTransformNode*> m_children;
    std::vector<ZTransformNode*>* m_rootLevel = nullptr; ///< the scene's list of nodes without a parent
    ZgeMatrix m_file;
    std::unique_ptr<ZNodeTRS> m_fileParts;
    std::unique_ptr<Inherited> m_inherited;
    std::optional<ZgeMatrix> m_animated, m_posed, m_constrained;
    // A node whose global matrix is not known has no descendant whose is: marking stops there.
    mutable ZgeMatrix m_local, m_global;
    mutable bool m_globalKnown = false;
    mutable std::uint64_t m_version = 1;
};
