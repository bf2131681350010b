// SPDX-License-Identifier: MIT
// A constraint whose evaluation a test writes.
#pragma once

#include "zconstraints/ZConstraint.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZScene.h"

#include <functional>
#include <string>
#include <vector>

/// Drives objects through connectors that it makes when it is set up: `sources` are read, `targets` written.
class ScriptedConstraint : public ZConstraint
{
public:
    struct Connected
    {
        ZModel* object = nullptr;
        IConnector* type[3] = {nullptr, nullptr, nullptr};
    };

    explicit ScriptedConstraint(const char* name = "scripted") : ZConstraint(name) {}
    ~ScriptedConstraint() override
    {
        if (IsDestroyed())
            return;
        SystemDetach();
        PrepareDestruct();
        ZConstraint::Destruct();
    }

    void Read(ZModel* object) { sources.push_back({object, {}}); }
    void Drive(ZModel* object) { targets.push_back({object, {}}); }

    void SetupAllConnectors(bool force) override
    {
        ++setups;
        if (!force && IgnoreSetupAllConnectors())
            return;
        for (int type = 0; type < 3; ++type) {
            for (Connected& source : sources)
                source.type[type] = ConstraintGetSourceConnector(source.object, static_cast<ZDataType>(type));
            for (Connected& target : targets)
                target.type[type] = ConstraintGetDestinationConnector(target.object, static_cast<ZDataType>(type));
        }
    }
    void ReleaseAllConnectors() override
    {
        ++releases;
        ConstraintReleaseAllConnectors();
        Forget();
    }
    void Forget()
    {
        for (std::vector<Connected>* list : {&sources, &targets})
            for (Connected& connected : *list)
                connected = {connected.object, {}};
    }
    bool ConstraintEvaluate(const ZEvaluateInfo& info) override
    {
        ++evaluations;
        return evaluate ? evaluate(info) : false;
    }

    static bool Write(const Connected& target, const ZgeTRS& trs, const ZEvaluateInfo& info)
    {
        const double t[] = {trs.translation.x, trs.translation.y, trs.translation.z, 1};
        const double r[] = {trs.rotation.x, trs.rotation.y, trs.rotation.z};
        const double s[] = {trs.scaling.x, trs.scaling.y, trs.scaling.z};
        const double* const values[] = {t, r, s};
        bool written = true;
        for (int type = 0; type < 3; ++type)
            written = target.type[type] != nullptr &&
                      target.type[type]->WriteDataEx(values[type], kBufferTypeGlobal, info, kConnectorWriteDirect) &&
                      written;
        return written;
    }
    static bool Read(const Connected& source, ZgeTRS& trs, const ZEvaluateInfo& info)
    {
        double values[3][4] = {};
        for (int type = 0; type < 3; ++type) {
            kBufferTypeLocalGlobal buffer = kBufferTypeLocal;
            if (source.type[type] == nullptr || !source.type[type]->ReadDataEx(values[type], buffer, info) ||
                buffer != kBufferTypeGlobal)
                return false;
        }
        trs.translation = {values[0][0], values[0][1], values[0][2], values[0][3]};
        trs.rotation = {values[1][0], values[1][1], values[1][2]};
        trs.scaling = {values[2][0], values[2][1], values[2][2]};
        return true;
    }

    std::vector<Connected> sources, targets;
    std::function<bool(const ZEvaluateInfo&)> evaluate;
    int evaluations = 0, setups = 0, releases = 0;
};

inline ZModel* AddBone(ZScene& scene, const char* name, const ZgeVector3& at, ZModel* parent = nullptr)
{
    auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
    bone->SetFileTransform(ZgeTranslation(at));
    if (parent != nullptr)
        bone->SetParent(parent);
    return scene.AddModel(std::move(bone));
}

/// Where an object stands now.
inline ZgeVector3 PlaceOf(const ZModel* model) { return ZgeTransformPoint({0, 0, 0}, model->GetTransformMatrix(true)); }
