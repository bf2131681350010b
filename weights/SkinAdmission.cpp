// SPDX-License-Identifier: MIT
// Reading the mode, tidying the links, merging duplicates. The order of the calls to the skin is part of the behaviour.
#include "weights/SkinAdmission.h"

#include "zmodel/ZModelInterfaces.h"
#include "ztoolkit/ZToolKit.h"

#include <unordered_set>

namespace {

constexpr const char* kTitle = "Skinning Tool";

struct ZeroShare
{
    int entries = 0;
    int zeros = 0;
    float Share() const { return static_cast<float>(zeros) / static_cast<float>(entries); }
};

ZeroShare CountZeros(ISkinLinks& links, int link)
{
    ZeroShare share;
    links.BeginLink(link);
    share.entries = links.EntryCount();
    for (int entry = 0; entry < share.entries; ++entry)
        if (links.EntryWeight(entry) == 0.0)
            ++share.zeros;
    links.EndLink();
    return share;
}

/// Is `later` the one to fold and remove? Only when its share of zeros is smaller; otherwise it is the earlier link.
bool FoldsLater(const ZeroShare& earlier, const ZeroShare& later)
{
    return earlier.entries != 0 && later.entries != 0 && later.Share() < earlier.Share();
}

void SetWeight(ISkinLinks& links, int link, int vertex, double weight)
{
    links.BeginLink(link);
    const int entry = links.FindEntry(vertex);
    if (entry == -1)
        links.AddEntry(vertex, weight);
    else
        links.SetEntryWeight(weight, entry);
    links.EndLink();
}

/// `folded` gives `kept` its weights and its bind transform, and goes.
void Fold(ISkinLinks& links, int folded, int kept)
{
    ZgeVector4 translation;
    ZgeVector3 rotation, scaling;
    links.BeginLink(folded);
    links.LinkBindTransform(translation, rotation, scaling);
    const int count = links.EntryCount();
    links.EndLink();
    for (int entry = 0; entry < count; ++entry) {
        links.BeginLink(folded);
        const int vertex = links.EntryVertex(entry);
        const double weight = links.EntryWeight(entry);
        links.EndLink();
        SetWeight(links, kept, vertex, weight);
    }
    links.BeginLink(kept);
    links.SetLinkBindTransform(translation, rotation, scaling);
    links.EndLink();
    links.RemoveLink(folded);
}

/// Looking for pairs costs links times links, so it is done only when there is a pair.
bool HasDuplicates(ISkinLinks& links)
{
    std::unordered_set<const ZModel*> seen;
    const int count = links.LinkCount();
    for (int link = 0; link < count; ++link)
        if (!seen.insert(links.LinkModel(link)).second)
            return true;
    return false;
}

bool AskToMerge()
{
    return ZtDisplayMessage(kTitle, "Some bones are duplicate, do you wish to try to merge them ?", "Yes", "No",
                            nullptr, 0, 0) == 1;
}

} // namespace

int SkinAdmission_ReadDeformMode(ISkinLinks& links)
{
    links.BeginLink(0);
    const int mode = links.DeformMode();
    links.EndLink();
    return mode;
}

void SkinAdmission_ShowAdditiveMessage()
{
    ZtDisplayMessage(kTitle,
                     "The ADDITIVE type of deformation used by the model is not supported by this skinning tool.", "OK",
                     nullptr, nullptr, 0, 0);
}

void SkinAdmission_ResetLinkOptions(ISkinLinks& links)
{
    for (int link = 0; link < links.LinkCount(); ++link) {
        links.BeginLink(link);
        links.ResetLinkOption(0);
        links.EndLink();
    }
}

void SkinAdmission_RemoveLinksWithoutBone(ISkinLinks& links)
{
    for (int link = 0; link < links.LinkCount();) {
        if (links.LinkModel(link) != nullptr) {
            ++link;
            continue;
        }
        links.RemoveLink(link);
        links.EndLink();
    }
}

void SkinAdmission_MergeDuplicateLinks(ISkinLinks& links)
{
    if (!HasDuplicates(links))
        return;
    bool asked = false;
    bool merge = false;
    for (int i = 0; i < links.LinkCount(); ++i) {
        ZModel* const bone = links.LinkModel(i);
        // Where the bone's link stands that later duplicates are compared with. It is i until i itself was folded away;
        // from then on it is the link that i was folded into.
        int first = i;
        for (int j = i + 1; j < links.LinkCount(); ++j) {
            if (links.LinkModel(j) != bone)
                continue;
            if (!asked) {
                merge = AskToMerge();
                asked = true;
            }
            if (!merge)
                continue;
            const ZeroShare earlierShare = CountZeros(links, first);
            const ZeroShare laterShare = CountZeros(links, j);
            const bool foldLater = FoldsLater(earlierShare, laterShare);
            Fold(links, foldLater ? j : first, foldLater ? first : j);
            // What stood behind the removed link moved down by one and is examined next.
            --j;
            if (foldLater)
                continue;
            if (first == i)
                --i;
            first = j;
        }
    }
}
