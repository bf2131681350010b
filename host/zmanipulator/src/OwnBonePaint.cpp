// SPDX-License-Identifier: MIT
#include "OwnBonePaint.h"

#include "BonePaint.h"
#include "Gl.h"
#include "zmodel/ZModelInterfaces.h"
#include "zmodel/ZScene.h"

namespace {
/// Gives back what a guest's drawing leaves, also when it throws.
class AttributeGuard
{
public:
    AttributeGuard()
    {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    }
    ~AttributeGuard()
    {
        glPopClientAttrib();
        glPopAttrib();
    }
    AttributeGuard(const AttributeGuard&) = delete;
    AttributeGuard& operator=(const AttributeGuard&) = delete;
};

void DrawOne(ZModel& bone, const ZgeMatrix& view)
{
    const AttributeGuard attributes;
    const GlStackGuard stacks;
    const float* const colour = BonePaint_Colour(bone);
    const ZgeMatrix place = bone.GetTransformMatrix(true) * view;
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadMatrixd(place.Data());
    glColor3fv(colour);
    static_cast<ISurface*>(bone.IQuery(kInterfaceSurface, 0))->Draw(nullptr);
}
} // namespace

bool OwnBonePaint_Has(ZModel& bone)
{
    if (bone.IQuery(kInterfaceSurface, 0) == nullptr)
        return false;
    for (const int id : {kInterfaceBoneOwnDrawingA, kInterfaceBoneOwnDrawingB, kInterfaceBoneOwnDrawingC})
        if (bone.IQuery(id, 0) != nullptr)
            return true;
    return false;
}

void OwnBonePaint_Draw(const ZScene& scene, const ZgeMatrix& view)
{
    for (ZModel* model : scene.GetModels())
        if (model->IsBone() && !model->IsHidden() && OwnBonePaint_Has(*model))
            DrawOne(*model, view);
}
