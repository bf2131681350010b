// SPDX-License-Identifier: MIT
// The ordered list of the tool's model data. It owns nothing: the tool destroys an item when it removes it.
#pragma once

#include "zbaselib/ZGenericObjectList.h"

class ZWeightUIModelData;

/// Instantiated once, in this library, and exported.
extern template class __attribute__((visibility("default"))) ZObjectListTemplate<ZWeightUIModelData>;

/// The position in the list is the model index of selection batches and the row of the model list. Exported by the
/// library so that other modules can use the type.
class __attribute__((visibility("default"))) ZWeightUIModelDataList : public ZObjectListTemplate<ZWeightUIModelData>
{
public:
    ZWeightUIModelDataList();
    ZWeightUIModelDataList(const ZWeightUIModelDataList& other);
    ZWeightUIModelDataList(ZWeightUIModelDataList&& other);
    ~ZWeightUIModelDataList();
    ZWeightUIModelDataList& operator=(const ZWeightUIModelDataList& other);
    ZWeightUIModelDataList& operator=(ZWeightUIModelDataList&& other);
};
