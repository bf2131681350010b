// SPDX-License-Identifier: MIT
// A plug-in with one tool, which has one button: it says how many bones the scene has.
#include "bcore/ZPluginApi.h"
#include "object/ZCatalogue.h"
#include "zdesktop/ZTool.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZScene.h"
#include "ztoolkit/ZToolKit.h"
#include "ztoolkit/ZtControls.h"

#include <algorithm>
#include <string>

namespace {

class BoneCounter : public ZTool
{
public:
    BoneCounter() : ZTool("BoneCounter")
    {
        // The form, in pixels: the button hangs 10 from each side and is 24 high.
        SetDesignSize(200, 44);
        SetToolSize(200, 44);
        SetToolMinimumSize(120, 44);
        AddRegion("CountButton", {10, ZtAttachment::Left, {}, 1}, {10, ZtAttachment::Top, {}, 1},
                  {-10, ZtAttachment::Right, {}, 1}, {24, ZtAttachment::Size, {}, 1});
        SetRegionView("CountButton", &m_button);
        m_button.SetCaption("Count Bones");
        m_button.SetPushButtonLook(true);
        m_button.RegisterHandler(kViewClicked, ZMakeHandler<&BoneCounter::OnCount>(this));
    }

private:
    void OnCount(ZObject*, ZEvent&)
    {
        m_button.SetState(false); // a check box that looks like a button: it springs back
        const auto& models = ZViewer::GetViewers().front()->GetScene()->GetModels();
        const auto bones =
            std::count_if(models.begin(), models.end(), [](const ZModel* model) { return model->IsBone(); });
        const std::string text = std::to_string(bones) + (bones == 1 ? " bone" : " bones");
        ZtDisplayMessage("Bone Counter", text.c_str(), "OK", nullptr, nullptr, 0, 0);
    }

    ZtCheckBox m_button{"CountButton"};
};

/// What the catalogue calls when the user opens the tool. The host owns the answer and destroys it with its window.
IObject* MakeBoneCounter(IObject*, const char*, void*)
{
    auto* const tool = new BoneCounter;
    tool->SetAllocated();
    return tool;
}

} // namespace

SKINDESK_PLUGIN_STAMP

SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }

SKINDESK_EXPORT void EntryPointbonecounter(kDllOperation operation)
{
    if (operation == kDllLoad)
        Object_Register("UI/Tools", "BoneCounter", "Bone Counter", &MakeBoneCounter, false, "", nullptr);
}
