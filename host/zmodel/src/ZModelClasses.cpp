// SPDX-License-Identifier: MIT
// The registered classes of this library, bases first: one file, so that the order of their construction is fixed.
#include "zmodel/ZGeometryModels.h"

ZCLASS_DEFINE(ZTransformNode, ZEntity)
ZCLASS_DEFINE(ZModel, ZTransformNode)
ZCLASS_DEFINE(ZModelGeometryBase, ZModel)
ZCLASS_DEFINE(ZModelPolymesh, ZModelGeometryBase)
ZCLASS_DEFINE(ZModelNurbs, ZModelGeometryBase)
