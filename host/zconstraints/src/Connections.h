// SPDX-License-Identifier: MIT
// What a constraint is connected to: connectors by object, and reference objects by group.
#pragma once

#include "zbaselib/ZGe.h"
#include "zconstraints/ZConstraint.h"

#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

/// One object as a constraint sees it during a pass. Before the pass the user-interface thread puts the object's
/// transform here, the evaluation reads and writes here only, and after the pass the user-interface thread takes the
/// result to the scene: so a pass never touches an object, and an object may go while a pass runs.
struct ConnectedObject
{
    static constexpr int kTypeCount = 3;

    explicit ConnectedObject(ZModel* object);
    ~ConnectedObject();

    /// The object, or null when it is gone. User-interface thread.
    ZModel* GetModel() const;
    /// Before a pass.
    void Prepare();
    /// After a pass that the constraint handled; true when the object's transform changed.
    bool Apply();
    /// Gives the object back to animation or file; true when its transform changed.
    bool GiveBack();

    HdlZPlug handle;
    ZModel* model; ///< where the object was; not to be followed without the handle
    ZgeTRS unconstrained;
    bool known = false; ///< `unconstrained` holds for this pass
    ZgeTRS written;
    bool wrote[kTypeCount] = {false, false, false};
    bool applied = false; ///< the object's constrained transform is this constraint's
    std::unique_ptr<IConnector, void (*)(IConnector*)> sources[kTypeCount];
    std::unique_ptr<IConnector, void (*)(IConnector*)> destinations[kTypeCount];
};

struct ZConstraint::Connections
{
    struct Reference
    {
        HdlZPlug handle;
        ZModel* model;
    };

    ConnectedObject& Connect(ZModel* object);
    IConnector* GetSource(ZModel* object, ZDataType type);
    IConnector* GetDestination(ZModel* object, ZDataType type);
    void Prepare();
    bool Apply();
    /// Frees all connectors. What was driven waits in `toGiveBack`.
    void Release();
    bool GiveBack();

    std::unordered_map<const ZModel*, std::unique_ptr<ConnectedObject>> objects;
    std::vector<std::unique_ptr<ConnectedObject>> gone; ///< their address went to another object; guests may still hold
                                                        ///< their connectors
    std::vector<std::unique_ptr<ConnectedObject>> toGiveBack;
    std::map<int, std::vector<Reference>> references;
};
