// SPDX-License-Identifier: MIT
// What happens to a skin when its model is admitted to the tool.
#pragma once

class ISkinLinks;

/// The skin's deformation mode: 0 = normalise, 1 = additive, 2 = total 100.
int SkinAdmission_ReadDeformMode(ISkinLinks& links);
/// "The ADDITIVE type of deformation ... is not supported".
void SkinAdmission_ShowAdditiveMessage();
/// Every link takes part as the skin's mode says.
void SkinAdmission_ResetLinkOptions(ISkinLinks& links);
void SkinAdmission_RemoveLinksWithoutBone(ISkinLinks& links);
/// Links that follow one bone become one link, if the user wants that. The question is asked at most once.
/// Of two such links the one with the smaller share of zero weights is folded into the other and removed (on equal
/// shares the earlier one): its weights replace those that the other had, and its bind transform goes along.
void SkinAdmission_MergeDuplicateLinks(ISkinLinks& links);
