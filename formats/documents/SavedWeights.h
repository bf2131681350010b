// SPDX-License-Identifier: MIT
// The weights of one model as they were when its file was last opened or saved: what "unsaved changes" is asked of.
#pragma once

#include "gltf/CharacterFile.h"
#include "zbaselib/ZGe.h"

#include <cstdint>
#include <vector>

class ZModel;
class ZSkin;

/// Tells whether saving would write other weights than the file holds. Counting changes cannot tell: undo counts too,
/// and brings back what was saved. Comparing reads every weight of the skin once, so it is done only where the answer
/// may have changed: after the first change to a saved model, and after steps back or forward in the history.
class SavedWeights
{
public:
    /// The skin is as the file has it. `influences` are not copied; they outlive this object.
    void NoteOpened(ZSkin& skin, const skindesk::gltf::Influences& influences);
    /// The skin, as it is now, is what the file holds.
    void NoteSaved(ZSkin& skin);
    /// `historyMoved`: steps were undone or redone since the last call. `isGesture`: a step is open, so that the answer
    /// holds for this moment only.
    bool IsChanged(ZSkin& skin, bool historyMoved, bool isGesture);

private:
    struct Link
    {
        const ZModel* bone = nullptr;
        ZgeMatrix inverseBind;
    };
    void NoteLinks(ZSkin& skin);
    bool HasSameLinks(ZSkin& skin) const;
    bool HasSameWeights(const ZSkin& skin) const;
    const skindesk::gltf::Influences& Saved() const { return m_opened != nullptr ? *m_opened : m_own; }

    const skindesk::gltf::Influences* m_opened = nullptr; ///< the file's own rows, until the first saving
    skindesk::gltf::Influences m_own;
    std::vector<Link> m_links;
    std::uint64_t m_version = 0; ///< of the skin when m_changed was found out
    bool m_changed = false;
};
