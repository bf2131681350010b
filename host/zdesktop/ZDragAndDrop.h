// SPDX-License-Identifier: MIT
// The one drag that may be under way in the application.
//
// As a story: the user's side begins a drag (Begin, then Add; or StartFrom, where the control adds) and drops it on a
// view. The view is asked at stage 1; only what its handler accepts is dropped at stage 2. Whoever is dropped on may
// end the drag; it has ended in any case when DropOn answers. A drag that a handler ends at stage 1 is not dropped. No
// other drag can begin while a view handles this one: that is misuse, and so are Accept and Add without a drag. An
// object that is destroyed in the course of the drag stays in it as null.
#pragma once

#include "object/IObject.h"

class ZtView;

/// Objects in the drag, and one of them (null out of range).
int GlobalDragAndDrop_GetCount();
IObject* GlobalDragAndDrop_Get(int index);
/// Called by a control's handler at stage 1: it may be dropped here.
void GlobalDragAndDrop_Accept();
/// Called at stage 0 by the control that the drag starts from: puts an object into the drag. A plain node, without
/// geometry and no bone, stands for the geometry models under it, depth first; for itself when there are none. The
/// second argument is the object's role and always 0.
void GlobalDragAndDrop_Add(IObject* object, int role);
/// Ends the drag and forgets its objects. Harmless without one.
void GlobalDragAndDrop_End();

// The user's side: what the desk and scripts do.

/// Begins a drag with nothing in it, in place of one that nobody ended.
void GlobalDragAndDrop_Begin();
/// Moves the drag over `view` (stage 1) and, when it is accepted, drops it there (stage 2). Null objects in the drag
/// are passed on as they are. Answers whether it was dropped: a disabled view and one that is gone accept nothing.
bool GlobalDragAndDrop_DropOn(ZtView* view);
/// Begins a drag from `view` (stage 0); answers the number of objects that the control put into it.
int GlobalDragAndDrop_StartFrom(ZtView* view);
