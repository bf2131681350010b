// SPDX-License-Identifier: MIT
// Constraints: boxes of the evaluation that drive the transforms of objects.
#pragma once

#include "object/ZObject.h"
#include "zconstraints/ZConnector.h"

#include <memory>
#include <vector>

/// What one evaluation pass hands to every box; the first field is the pass id.
struct ZEvaluateInfo
{
    int passId = 0;
    double time = 0; ///< seconds
};

class IBox
{
protected:
    virtual ~IBox() = default;
};

class IEvaluateObject
{
protected:
    virtual ~IEvaluateObject() = default;
};

class IConnectorCallback
{
protected:
    virtual ~IConnectorCallback() = default;
};

/// Four questions about a constraint, answered with constants, and its evaluation.
class IConstraint
{
public:
    virtual bool ConstraintCanBeActive() = 0;
    virtual bool ConstraintCanSnap() = 0;
    virtual bool ConstraintDrivesSeveral() = 0;
    virtual bool ConstraintIsLive() = 0;
    /// Evaluates one pass; true when the constraint handled it.
    virtual bool ConstraintEvaluate(const ZEvaluateInfo& info) = 0;

protected:
    virtual ~IConstraint() = default;
};

class BBox : public ZObjectStorable, public IBox, public IRegister, public IEvaluateObject, public IConnectorCallback
{
public:
    ZCLASS_DECLARE()
    using ZObjectStorable::ZObjectStorable;
};

/// A constraint is known to the evaluation manager while it lives and evaluated while it is enabled. Reference objects
/// come in groups; connectors are made for one object and data type and released all at once, which gives the objects
/// that were written back to animation or file. Changes of a constraint happen while evaluation is paused.
///
/// ConstraintEvaluate runs on a thread of the evaluation manager. It may read and write connectors, release them all
/// and remove reference objects; what it released is given back when the pass is finished. Asking for connectors,
/// adding reference objects and touching objects of the scene belong to the user-interface thread; in an evaluation
/// they are misuse. A constraint whose evaluation throws is switched off, with one warning.
///
/// A derived class that is evaluated runs SystemDetach, PrepareDestruct and Destruct at the beginning of its own
/// destructor unless they have run: SystemDetach waits for the pass under way, which still uses the derived part.
class ZConstraint : public BBox, public IConstraint
{
public:
    ZCLASS_DECLARE()
    explicit ZConstraint(const char* name);
    ~ZConstraint() override;

    /// Enabling sets the connectors up, each time it is called, and marks the constraint; disabling releases them and
    /// takes the mark away. Answers whether it is enabled afterwards.
    bool ConstraintSetEnabled(bool enabled);
    bool ConstraintGetEnabled() const { return m_enabled; }
    /// The next pass evaluates this constraint even if nothing it reads has changed.
    void MarkForEvaluation();
    bool IsMarkedForEvaluation() const { return m_marked; }

    // What a constraint overrides.
    virtual void SetupAllConnectors(bool force);
    virtual void ReleaseAllConnectors();
    bool ConstraintCanBeActive() override { return true; }
    bool ConstraintCanSnap() override { return false; }
    bool ConstraintDrivesSeveral() override { return true; }
    bool ConstraintIsLive() override { return true; }
    bool ConstraintEvaluate(const ZEvaluateInfo& info) override;

    // What a constraint calls.
    /// The host is loading or clearing and asks to skip connector set-up.
    static bool IgnoreSetupAllConnectors();
    /// When the host no longer asks, every enabled constraint is set up anew.
    static void SetIgnoreSetupAllConnectors(bool ignore);
    /// The connector of this object and data type, the same one until connectors are released; null without an object.
    /// It outlives its object: then it reads and writes nothing and answers false.
    IConnector* ConstraintGetSourceConnector(ZModel* object, ZDataType type);
    IConnector* ConstraintGetDestinationConnector(ZModel* object, ZDataType type);
    /// Releases every connector of this constraint; the objects that were driven are driven no longer.
    void ConstraintReleaseAllConnectors();
    void ConstraintAddReferenceObject(int group, ZModel* object);
    int ConstraintGetReferenceObjectCount(int group) const;
    /// Null when the index is not there or the object has gone.
    ZModel* ConstraintGetReferenceObject(int group, int index) const;
    void ConstraintRemoveReferenceObject(int group, int index);

    /// Waits for the pass under way and leaves the evaluation manager.
    void SystemDetach() override;
    void Destruct() override;

private:
    friend class ZEvaluateManager;
    struct Connections;
    std::unique_ptr<Connections> m_connections;
    bool m_enabled = false;
    bool m_marked = false;
};

/// The host's box constraint, if it has one: it has none and answers null.
ZConstraint* ZConstraints_GetBoxConstraint();
