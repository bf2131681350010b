// SPDX-License-Identifier: MIT
// The list of the tool's model data, and the typed list under it, exported for other modules.
#include "weights/ZWeightUIModelDataList.h"

template class ZObjectListTemplate<ZWeightUIModelData>;

ZWeightUIModelDataList::ZWeightUIModelDataList() = default;
ZWeightUIModelDataList::ZWeightUIModelDataList(const ZWeightUIModelDataList& other) = default;
// A move copies: both lists then refer to the same model data.
ZWeightUIModelDataList::ZWeightUIModelDataList(ZWeightUIModelDataList&& other)
    : ZObjectListTemplate<ZWeightUIModelData>(other) // NOLINT(performance-move-constructor-init)
{
}
ZWeightUIModelDataList::~ZWeightUIModelDataList() = default;
ZWeightUIModelDataList& ZWeightUIModelDataList::operator=(const ZWeightUIModelDataList& other) = default;
ZWeightUIModelDataList& ZWeightUIModelDataList::operator=(ZWeightUIModelDataList&& other)
{
    ZObjectListTemplate<ZWeightUIModelData>::operator=(static_cast<const ZWeightUIModelDataList&>(other));
    return *this;
}
