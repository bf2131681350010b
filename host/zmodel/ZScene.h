// SPDX-License-Identifier: MIT
// The scene: all models, and the animations that move them.
#pragma once

#include "zmodel/ZAnimation.h"
#include "zmodel/ZModel.h"

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

/// Owns every node. User-interface thread only.
class ZScene
{
public:
    ZScene();
    ~ZScene();
    ZScene(const ZScene&) = delete;
    ZScene& operator=(const ZScene&) = delete;

    /// Adds a model and takes ownership; its place in the hierarchy is its parent's. Answers it.
    ZModel* AddModel(std::unique_ptr<ZModel> model);
    /// Every model in order of adding: meshes, NURBS, bones, nodes.
    const std::vector<ZModel*>& GetModels() const { return m_models; }
    bool Contains(const ZModel* model) const;
    /// Nodes without a parent, in order.
    const std::vector<ZTransformNode*>& GetRoots() const { return m_roots; }
    /// The path of every model, in the order of GetModels: what GetPath answers, for all of them in one pass.
    std::vector<std::string> GetPaths() const;

    /// Takes a model out of the scene and frees it. Waits for the end of an open transaction when the model is a bone
    /// or a link follows it. Links to it leave every skin before anyone is notified, which drops the undo history when
    /// there were any; then notification kind 8 is sent with the model as owner and source, which is no longer among
    /// GetModels but still whole; its children go to its parent and keep their place, in the hierarchy and in the
    /// scene.
    void DeleteModel(ZModel* model);
    /// Deletes all models without notifying one by one; the session has told everybody that the scene is being cleared.
    void Clear();

    /// Box of all geometry as it is deformed now, in the scene; empty when there is none. Hidden models do not count.
    ZgeBox GetBox() const;

    // Animation: see ZAnimation.h.
    int AddAnimation(std::unique_ptr<ZAnimation> animation);
    const std::vector<std::unique_ptr<ZAnimation>>& GetAnimations() const { return m_animations; }
    /// -1 = none: the rest state of the file comes back.
    void SetAnimation(int index);
    int GetAnimation() const { return m_animation; }
    /// Seconds; a number that is not finite is misuse. The animation loops when it is beyond the animation's end and
    /// looping is on, else holds the end.
    void SetTime(double seconds);
    double GetTime() const { return m_time; }
    /// The time within the chosen animation that GetTime means: looped or held; GetTime itself without an animation.
    double GetAnimationTime() const;
    void SetLooping(bool looping) { m_looping = looping; }
    bool IsLooping() const { return m_looping; }
    /// Puts every node's posing by hand away.
    void ClearPose();

private:
    struct Tracks;

    bool IsFollowed(const ZModel* model) const;
    void DeleteNow(ZModel* model);
    static void CutFromHierarchy(ZModel& model);
    void ApplyAnimation();
    void ClearAnimated();

    std::vector<ZTransformNode*> m_roots;
    std::vector<std::unique_ptr<ZModel>> m_owned;
    std::vector<ZModel*> m_models;
    std::unordered_set<const ZModel*> m_present;
    std::vector<std::unique_ptr<ZAnimation>> m_animations;
    std::unique_ptr<Tracks> m_tracks; ///< the chosen animation's channels by node
    std::shared_ptr<ZScene*> m_self;  ///< for work that waits for the end of a transaction: null once the scene is gone
    long m_clearings = 0;
    int m_animation = -1;
    double m_time = 0;
    bool m_looping = true;
};
