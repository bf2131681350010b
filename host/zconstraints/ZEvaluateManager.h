// SPDX-License-Identifier: MIT
// The evaluation manager: runs the constraints, pass after pass.
#pragma once

#include "zconstraints/ZConstraint.h"

#include <memory>

class ZScene;

/// Passes run between events, on threads of the manager's own; the user-interface thread waits for a pass where it
/// needs its result (Evaluate) and goes on where it does not (Start). DevicePause waits for a pass to end and keeps the
/// next from starting until the matching DeviceRelease; pauses nest. Data of constraints change only while it is
/// paused. A pass: reads unconstrained transforms, evaluates every enabled constraint, then the written transforms
/// become the constrained globals of their objects in one step on the user-interface thread (Finish).
class ZEvaluateManager
{
public:
    static ZEvaluateManager* TheOne();
    ZEvaluateManager();
    ~ZEvaluateManager();

    void DevicePause();
    void DeviceRelease();
    bool IsPaused() const;

    /// Runs one whole pass at `time` and puts its result into the scene. Nothing while paused (false).
    bool Evaluate(double time);
    /// Starts a pass on the manager's threads; false while paused or while one runs.
    bool Start(double time);
    /// Waits for a started pass and puts its result into the scene; false when none was started.
    bool Finish();
    /// Is there anything to evaluate: an enabled constraint, or a marked one?
    bool HasWork() const;
    /// Passes are counted from 1; 0 before the first.
    int GetLastPassId() const;
    /// Counts up whenever a pass, or the release of connectors, changed a transform of the scene.
    long GetChangeCount() const;
    /// Does this run on the manager's evaluation thread? Pausing there does nothing: a pass cannot wait for itself.
    bool IsEvaluationThread() const;
    const std::vector<ZConstraint*>& GetConstraints() const;

private:
    friend class ZConstraint;
    void AddConstraint(ZConstraint* constraint);
    void RemoveConstraint(ZConstraint* constraint);
    void MarkChanged();
    struct State;
    std::unique_ptr<State> m_state;
};
