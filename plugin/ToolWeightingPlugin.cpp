// SPDX-License-Identifier: MIT
// What the library exports: its entry point, its readiness, its stamp; and the maker of its one tool.
#include "plugin/EntryPoint.h"

#include "object/ZCatalogue.h"
#include "tool/ZToolCharacterWeighting.h"

#include <new>

SKINDESK_PLUGIN_STAMP

namespace {

/// Every call makes a new tool, which the host owns from here on and destroys with its window.
IObject* MakeSkinningTool(IObject*, const char*, void*)
{
    auto* const tool = new (std::nothrow) ZToolCharacterWeighting;
    if (tool == nullptr)
        return nullptr;
    tool->SetAllocated();
    return static_cast<IObject*>(tool->IQuery(kInterfaceObject, 0));
}

} // namespace

void EntryPointtoolweighting(kDllOperation operation)
{
    if (operation != kDllLoad)
        return;
    // A second registration of the same entry changes nothing; a refused one leaves the library without its tool.
    Object_Register("UI/Tools", "Skins", "Skinning tool", MakeSkinningTool, false, "zapp/zapp-skin.png", nullptr);
}

bool LIBRARY_INIT() { return true; }
